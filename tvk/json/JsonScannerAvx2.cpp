#include "tvk/json/detail/ScannerHeaders.h"

#if TVK_PROCESSOR_X86

#include <immintrin.h>

TVK_BEGIN_TARGET("avx2,bmi,bmi2,pclmul,popcnt")

#include "tvk/json/detail/Avx2Block.h"
#include "tvk/json/detail/Avx2Masks.h"
#include "tvk/json/detail/IndexedScanner.h"

namespace tvk::detail {

namespace {

constexpr auto AVX2 = ScanVariant::of<IndexedCode<Avx2Block, Avx2Masks>>("AVX2");

}  // namespace

}  // namespace tvk::detail

TVK_END_TARGET

#endif

namespace tvk::detail {

ScanVariant const * scanVariantAvx2() {
#if TVK_PROCESSOR_X86
    if (platform::hasAvx2() && platform::hasBitOperations()) {
        return &AVX2;
    }
#endif
    return nullptr;
}

}  // namespace tvk::detail
