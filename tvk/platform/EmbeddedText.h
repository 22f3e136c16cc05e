#pragma once

#include <cstddef>
#include <new>

#include "tvk/platform/CString.h"
#include "tvk/platform/TextRoom.h"

namespace tvk::platform {

/// A text that stands behind an object in one block of memory: the object, then the count of the
/// text, then its bytes. Whoever goes last frees the block, the object or a copy of the text.
///
///     void * const block = std::malloc(EmbeddedText::blockSize(sizeof(Object), length));
///     char * const room = EmbeddedText::roomIn(block, sizeof(Object));
///     std::memcpy(room, bytes, length);
///     new (block) Object(EmbeddedText::firstText(block, sizeof(Object), length));
///
/// Ownership: the object holds a count besides those of the texts, so the bytes stay where and as they
///            are while it lives; leave() gives it up.
/// Threads:   as CString.
class EmbeddedText {
public:
    /// Whether a count can stand right behind an object of so many bytes.
    static constexpr bool fitsBehind(std::size_t objectSize) {
        return objectSize % alignof(CString::Block) == 0;
    }

    static constexpr std::size_t blockSize(std::size_t objectSize, std::size_t length) {
        return objectSize + sizeof(CString::Block) + textRoom(length);
    }

    static char * roomIn(void * block, std::size_t objectSize) noexcept {
        return static_cast<char *>(block) + objectSize + sizeof(CString::Block);
    }

    /// Makes a text of the first `length` bytes in the room of `block`, which comes from malloc; the
    /// object's own count is made with it. Requires: 0 < length <= 0x7fffffff.
    static CString firstText(void * block, std::size_t objectSize, unsigned int length) noexcept {
        constexpr int OBJECT_AND_TEXT = 2;
        char * const room = roomIn(block, objectSize);
        new (countOf(room)) CString::Block{OBJECT_AND_TEXT, static_cast<int>(length),
                                           -static_cast<int>(objectSize)};
        room[length] = '\0';
        return textOf(room);
    }

    /// Whether `text` is the one in `room` and nobody else has it but the object.
    static bool isAlone(char const * room, CString const & text) noexcept {
        return text.data_ == room && countOf(room)->references.load(std::memory_order_acquire) == 2;
    }

    /// Gives up the object's count; the object has been destroyed by now.
    static void leave(char * room) noexcept { CString const last = textOf(room); }

private:
    /// Takes over a count.
    static CString textOf(char * room) noexcept {
        CString text;
        text.data_ = room;
        return text;
    }
    static CString::Block * countOf(char const * room) noexcept {
        return reinterpret_cast<CString::Block *>(const_cast<char *>(room) -
                                                  sizeof(CString::Block));
    }
};

}  // namespace tvk::platform
