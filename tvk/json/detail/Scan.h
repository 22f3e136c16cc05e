#pragma once

#include "tvk/json/detail/MessageBuilder.h"
#include "tvk/json/detail/TableHandler.h"

namespace tvk::detail {

/// Which of the four entries of the scanner a scan goes through.
enum class ScanEntry { OBJECT, ARRAY, VALUE, FIELDS };

/// A scan that calls a Handler. Returns the position at which it stopped.
template <class Handler>
using Scan = unsigned int (*)(ScanEntry entry, char const * data, unsigned int length,
                              Handler & handler, int options);

/// The code for one kind of processor, once for each handler. All variants make the same calls with
/// the same hashes and positions and fail with the same texts.
///
/// To add a handler: write a class with the functions of TableHandler and a TERMINATED_COPIES of its
/// own, inline in its header; include that header below and add a member for it here; name it in
/// ScanVariant::of. Each variant then has the scanner with the handler inlined, and
/// bestScanVariant() gives the one to call. What the header brings along is built for every
/// processor, since the sources of the variants include all headers before they turn to theirs.
struct ScanVariant {
    char const * name;
    Scan<TableHandler> table;
    Scan<MessageBuilder> message;

    /// From a type with `template <class Handler> static Scan<Handler> scan`.
    template <class Code>
    static constexpr ScanVariant of(char const * name) {
        return {name, Code::template scan<TableHandler>, Code::template scan<MessageBuilder>};
    }
};

ScanVariant const * scanVariantPlain();

/// Null where this build or the processor does not have SSE4.1.
ScanVariant const * scanVariantSse41();

/// Null where this build or the processor does not have AVX2 and the bit operations.
ScanVariant const * scanVariantAvx2();

/// Null where this build or the processor does not have AVX-512 with VBMI2 and all of the above.
ScanVariant const * scanVariantAvx512();

/// The one that suits this processor best.
ScanVariant const & bestScanVariant();

}  // namespace tvk::detail
