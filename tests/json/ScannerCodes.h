#pragma once

#include <string_view>

#include "tests/support/EventRecorder.h"
#include "tests/support/LibraryScan.h"
#include "tests/support/ReferenceScanner.h"
#include "tvk/json/detail/Scan.h"

namespace tvk::test {

/// What one of the library's codes for scanning comes to, whichever it would choose by itself.
inline ScanOutcome scanBy(detail::Scan scan, ScanMode mode, std::string_view input, int options) {
    constexpr detail::ScanEntry ENTRIES[] = {detail::ScanEntry::OBJECT, detail::ScanEntry::ARRAY,
                                             detail::ScanEntry::VALUE, detail::ScanEntry::FIELDS};
    return outcomeOf(
        [&](char const * data, unsigned int length, SimpleJsonHandler * handler, void * userData) {
            return scan(ENTRIES[static_cast<int>(mode)], data, length, *handler, userData, options);
        },
        input);
}

}  // namespace tvk::test
