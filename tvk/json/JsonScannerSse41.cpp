#include "tvk/json/detail/ScannerHeaders.h"

#if TVK_PROCESSOR_X86

#include <smmintrin.h>

TVK_BEGIN_TARGET("sse4.1")

#include "tvk/json/detail/Scanner.h"
#include "tvk/json/detail/Sse41Block.h"

namespace tvk::detail {

namespace {

constexpr auto SSE41 = ScanVariant::of<CarefulCode<Sse41Block>>("SSE4.1");

}  // namespace

}  // namespace tvk::detail

TVK_END_TARGET

#endif

namespace tvk::detail {

ScanVariant const * scanVariantSse41() {
#if TVK_PROCESSOR_X86
    if (platform::hasSse41()) {
        return &SSE41;
    }
#endif
    return nullptr;
}

}  // namespace tvk::detail
