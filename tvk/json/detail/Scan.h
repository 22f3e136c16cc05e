#pragma once

#include "tvk/json/SimpleJsonHandler.h"

namespace tvk::detail {

/// Which of the four entries of the scanner a scan goes through.
enum class ScanEntry { OBJECT, ARRAY, VALUE, FIELDS };

/// One way to scan; all give the same events, hashes, positions and errors. Returns the position at
/// which the scan stopped.
using Scan = unsigned int (*)(ScanEntry entry, char const * data, unsigned int length,
                              SimpleJsonHandler const & handler, void * userData, int options);

unsigned int scanPlain(ScanEntry entry, char const * data, unsigned int length,
                       SimpleJsonHandler const & handler, void * userData, int options);

/// Null where this build or the processor does not have SSE4.1.
Scan scanWithSse41();

/// The one that suits this processor best.
Scan bestScan();

}  // namespace tvk::detail
