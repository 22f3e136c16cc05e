#include <cstdint>

#include "tvk/text/StringUtil.h"
#include "tvk/text/detail/BoundedText.h"

namespace tvk {

namespace {

constexpr char DIGITS[] = "0123456789ABCDEF";

}

CString StringUtil::toHexString(void const * data, unsigned int size) {
    return detail::boundedText(std::uint64_t{2} * size, [=](char * out) {
        auto const * const bytes = static_cast<unsigned char const *>(data);
        for (unsigned int i = 0; i < size; ++i) {
            *out++ = DIGITS[bytes[i] >> 4];
            *out++ = DIGITS[bytes[i] & 15];
        }
        return out;
    });
}

}  // namespace tvk
