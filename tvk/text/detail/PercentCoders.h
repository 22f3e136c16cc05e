#pragma once

#include <cstddef>

/// The coding of URL text that StringUtil offers, in the forms that a processor may have.
namespace tvk::detail {

struct PercentDecoded {
    std::size_t read;  ///< all, or up to the '%' of a sequence that is cut off or has a bad digit
    char * end;        ///< behind the last byte written
};

struct PercentCoders {
    /// Returns the end of what it wrote. Requires: room for three bytes for each byte of data.
    char * (*encode)(char const * data, std::size_t size, char * out);
    /// Requires: room for a byte for each byte of data. What it leaves of the room may change.
    PercentDecoded (*decode)(char const * data, std::size_t size, char * out);
};

PercentCoders const & plainPercentCoders();

/// Null where the processor lacks what the code needs.
PercentCoders const * percentCodersWithAvx2();

/// The fastest that the processor has.
PercentCoders const & bestPercentCoders();

}  // namespace tvk::detail
