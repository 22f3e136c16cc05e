#include <cstddef>
#include <cstdint>

#include "tvk/text/StringUtil.h"
#include "tvk/text/detail/BoundedText.h"
#include "tvk/text/detail/ByteEncoders.h"

namespace tvk {

namespace {

detail::ByteEncoders const & encodersFor(unsigned int size) {
    return size < detail::FEWEST_VECTOR_BYTES ? detail::plainByteEncoders()
                                              : detail::bestByteEncoders();
}

}  // namespace

CString StringUtil::toHexString(void const * data, unsigned int size) {
    return detail::boundedText(std::uint64_t{2} * size, [=](char * out) {
        encodersFor(size).hex(static_cast<unsigned char const *>(data), size, out);
        return out + std::size_t{2} * size;
    });
}

}  // namespace tvk
