#pragma once

#include <cstddef>
#include <cstring>
#include <new>

#include "tvk/platform/CString.h"

namespace tvk::platform {

/// A text that stands behind an object in one block of memory: the object, then the count of the
/// text, then its bytes. Whoever goes last frees the block, the object or a copy of the text.
///
///     void * const block = std::malloc(EmbeddedText::blockSize(sizeof(Object), length));
///     char * const room = EmbeddedText::prepare(block, sizeof(Object), length);
///     std::memcpy(room, bytes, length);
///     new (block) Object(EmbeddedText::textIn(room));
///
/// Ownership: the one who prepares holds a count of its own besides those of the texts, so the text
///            does not change while the object lives; leave() gives it up.
/// Threads:   as CString.
class EmbeddedText {
public:
    /// Places an object of so many bytes can stand at, right before the count.
    static constexpr bool fits(std::size_t objectSize) {
        return objectSize % alignof(CString::Block) == 0;
    }

    static constexpr std::size_t blockSize(std::size_t objectSize, std::size_t length) {
        return objectSize + sizeof(CString::Block) + length + 1;
    }

    /// `block` comes from malloc. Returns the room for `length` bytes; the NUL behind it is set.
    /// Requires: 0 < length <= 0x7fffffff.
    static char * prepare(void * block, std::size_t objectSize, unsigned int length) noexcept {
        char * const count = static_cast<char *>(block) + objectSize;
        new (count) CString::Block{1, static_cast<int>(length), -static_cast<int>(objectSize)};
        char * const room = count + sizeof(CString::Block);
        room[length] = '\0';
        return room;
    }

    /// Cuts the text that nobody has yet. Requires: 0 < length <= that of prepare().
    static void setLength(char * room, unsigned int length) noexcept {
        countOf(room)->length = static_cast<int>(length);
        room[length] = '\0';
    }

    /// The text, which is a copy like any other.
    static CString textIn(char * room) noexcept {
        CString text;
        text.data_ = room;
        text.share();
        return text;
    }

    /// True where no text but `text` and the object's own count keep the block.
    static bool isOnlyTextOf(char const * room, CString const & text) noexcept {
        return text.data_ == room && countOf(room)->references.load(std::memory_order_acquire) == 2;
    }

    /// Gives up the object's count; the object has been destroyed by now.
    static void leave(char * room) noexcept {
        CString last;
        last.data_ = room;
    }

private:
    static CString::Block * countOf(char const * room) noexcept {
        return reinterpret_cast<CString::Block *>(const_cast<char *>(room) -
                                                  sizeof(CString::Block));
    }
};

}  // namespace tvk::platform
