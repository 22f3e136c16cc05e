#include "tvk/json/detail/Scan.h"
#include "tvk/platform/Processor.h"

#if TVK_PROCESSOR_X86

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

#include "tvk/json/JsonOptions.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/json/detail/HashPowers.h"
#include "tvk/json/detail/ScannerErrors.h"
#include "tvk/platform/TargetCode.h"

TVK_BEGIN_TARGET("avx2,bmi,bmi2,pclmul,popcnt")

#include "tvk/json/detail/Avx2Block.h"
#include "tvk/json/detail/Avx2Masks.h"
#include "tvk/json/detail/IndexedScanner.h"

namespace tvk::detail {

namespace {

struct Avx2Code {
    using Block = Avx2Block;
    using Masks = Avx2Masks;

    template <class Handler>
    static unsigned int scan(ScanEntry entry, char const * data, unsigned int length,
                             Handler & handler, int options) {
        return IndexedScanner<Avx2Code, Handler>(data, length, handler, options).scan(entry);
    }
};

constexpr ScanVariant AVX2 = ScanVariant::of<Avx2Code>("AVX2");

}  // namespace

}  // namespace tvk::detail

TVK_END_TARGET

namespace tvk::detail {

ScanVariant const * scanVariantAvx2() {
    return platform::hasAvx2() && platform::hasBitOperations() ? &AVX2 : nullptr;
}

}  // namespace tvk::detail

#else

namespace tvk::detail {

ScanVariant const * scanVariantAvx2() { return nullptr; }

}  // namespace tvk::detail

#endif
