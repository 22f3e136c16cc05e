#include "tvk/json/detail/Scan.h"
#include "tvk/platform/Processor.h"

#if TVK_PROCESSOR_X86

#include <smmintrin.h>

#include <bit>
#include <cstdint>
#include <cstring>

#include "tvk/json/JsonOptions.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/json/detail/HashPowers.h"
#include "tvk/json/detail/ScannerErrors.h"
#include "tvk/platform/TargetCode.h"

TVK_BEGIN_TARGET("sse4.1")

#include "tvk/json/detail/Scanner.h"
#include "tvk/json/detail/Sse41Block.h"

namespace tvk::detail {

namespace {

struct Sse41Code {
    template <class Handler>
    static unsigned int scan(ScanEntry entry, char const * data, unsigned int length,
                             Handler & handler, int options) {
        return Scanner<Sse41Block, Handler>(data, length, handler, options).scan(entry);
    }
};

constexpr ScanVariant SSE41 = ScanVariant::of<Sse41Code>("SSE4.1");

}  // namespace

}  // namespace tvk::detail

TVK_END_TARGET

namespace tvk::detail {

ScanVariant const * scanVariantSse41() { return platform::hasSse41() ? &SSE41 : nullptr; }

}  // namespace tvk::detail

#else

namespace tvk::detail {

ScanVariant const * scanVariantSse41() { return nullptr; }

}  // namespace tvk::detail

#endif
