#include "tvk/json/detail/ScannerHeaders.h"

#if TVK_PROCESSOR_X86

#include <immintrin.h>

TVK_BEGIN_TARGET("avx512f,avx512bw,avx512vl,avx512vbmi2,avx2,bmi,bmi2,pclmul,popcnt")

#include "tvk/json/detail/Avx2Block.h"
#include "tvk/json/detail/Avx512Masks.h"
#include "tvk/json/detail/IndexedScanner.h"

namespace tvk::detail {

namespace {

constexpr auto AVX512 = ScanVariant::of<IndexedCode<Avx2Block, Avx512Masks>>("AVX-512");

}  // namespace

}  // namespace tvk::detail

TVK_END_TARGET

#endif

namespace tvk::detail {

ScanVariant const * scanVariantAvx512() {
#if TVK_PROCESSOR_X86
    if (platform::hasAvx512() && platform::hasAvx2() && platform::hasBitOperations()) {
        return &AVX512;
    }
#endif
    return nullptr;
}

}  // namespace tvk::detail
