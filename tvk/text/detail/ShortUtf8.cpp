#include "tvk/text/detail/ShortUtf8.h"

namespace tvk::detail {

namespace {

template <unsigned int SIZE>
int putIfRoom(char * buffer, unsigned int bufferSize, int codePoint) {
    if (bufferSize < SIZE) {
        return 0;
    }
    putUtf8<SIZE>(buffer, static_cast<unsigned int>(codePoint));
    return SIZE;
}

}  // namespace

int encodeLongUtf8(char * buffer, unsigned int bufferSize, int codePoint) {
    // Deliberate: 4 bytes could carry up to 0x1FFFFF. From 0x20000 on the wire has always had 5, and
    // receivers compare and hash those bytes.
    if (codePoint <= 0x1FFFF) {
        return putIfRoom<4>(buffer, bufferSize, codePoint);
    }
    if (codePoint <= 0x3FFFFFF) {
        return putIfRoom<5>(buffer, bufferSize, codePoint);
    }
    return putIfRoom<6>(buffer, bufferSize, codePoint);
}

}  // namespace tvk::detail
