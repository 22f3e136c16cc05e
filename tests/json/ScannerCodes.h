#pragma once

#include <string_view>
#include <vector>

#include "tests/support/EventRecorder.h"
#include "tests/support/LibraryScan.h"
#include "tests/support/ReferenceScanner.h"
#include "tvk/json/detail/Scan.h"

namespace tvk::test {

/// Those that this processor can run.
inline std::vector<detail::ScanVariant const *> scanVariants() {
    std::vector<detail::ScanVariant const *> variants = {detail::scanVariantPlain()};
    for (detail::ScanVariant const * const variant :
         {detail::scanVariantSse41(), detail::scanVariantAvx2(), detail::scanVariantAvx512()}) {
        if (variant != nullptr) {
            variants.push_back(variant);
        }
    }
    return variants;
}

/// What one of the scanner's variants comes to, whichever the library would choose by itself.
inline ScanOutcome scanBy(detail::ScanVariant const & variant, ScanMode mode,
                          std::string_view input, int options) {
    constexpr detail::ScanEntry ENTRIES[] = {detail::ScanEntry::OBJECT, detail::ScanEntry::ARRAY,
                                             detail::ScanEntry::VALUE, detail::ScanEntry::FIELDS};
    return outcomeOf(
        [&](char const * data, unsigned int length, SimpleJsonHandler * handler, void * userData) {
            detail::TableHandler table(*handler, userData);
            return variant.table(ENTRIES[static_cast<int>(mode)], data, length, table, options);
        },
        input);
}

}  // namespace tvk::test
