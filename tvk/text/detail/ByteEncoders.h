#pragma once

#include <cstddef>

#include "tvk/text/detail/Base64Alphabet.h"

/// The long stretches of base64 and of hexadecimal digits, in the forms that a processor may have.
namespace tvk::detail {

/// What the vector code takes at least, so that it reads nothing but the data and writes nothing but
/// their text.
constexpr std::size_t FEWEST_VECTOR_GROUPS = 8;
constexpr std::size_t FEWEST_VECTOR_BYTES = 16;

struct ByteEncoders {
    /// Writes four characters for each group of three bytes. Requires: FEWEST_VECTOR_GROUPS.
    void (*base64)(unsigned char const * data, std::size_t groups, Base64Alphabet const & alphabet,
                   char * out);
    /// Writes two capital digits for each byte. Requires: FEWEST_VECTOR_BYTES.
    void (*hex)(unsigned char const * data, std::size_t size, char * out);
};

ByteEncoders const & plainByteEncoders();

/// Null where the processor lacks what the code needs.
ByteEncoders const * byteEncodersWithSse41();
ByteEncoders const * byteEncodersWithAvx2();

/// The fastest that the processor has.
ByteEncoders const & bestByteEncoders();

}  // namespace tvk::detail
