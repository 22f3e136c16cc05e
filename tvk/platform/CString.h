#pragma once

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstring>
#if defined(__cpp_impl_three_way_comparison)
#include <compare>
#endif

#include "tvk/platform/Export.h"

#if defined(__GNUC__)
#define TVK_PRINTF_LIKE(text, first) __attribute__((__format__(__printf__, text, first)))
#else
#define TVK_PRINTF_LIKE(text, first)
#endif

namespace tvk::platform {
class EmbeddedText;
}

/// Narrow text, the text type of every interface: reference-counted, copy on write, one pointer in
/// size. The empty text needs no allocation, and a text that was moved from is empty.
///
/// Content:   bytes of any value, NUL included; lengths and positions are in bytes. A NUL stands
///            behind the last byte, so the text can be handed to functions that want one.
///            Comparisons and searches see all bytes, as unsigned.
/// Arguments: a null `char const *` reads as the empty text. Arguments may point into the text that
///            the operation changes.
/// Threads:   the count is atomic, so copies of one text may be made and dropped on many threads;
///            a single CString object belongs to one thread at a time.
/// Failure:   std::bad_alloc where memory is out, a length is negative or would pass 0x7fffffff bytes;
///            the text then stays as it was.
class TVK_API CString {
public:
    CString() noexcept : data_(emptyText()) {}
    CString(CString const & other) noexcept : data_(other.data_) { share(); }
    CString(CString && other) noexcept : data_(other.data_) { other.data_ = emptyText(); }
    CString(char const * text);
    /// The first `length` bytes at `bytes`, which may be null when there are none.
    CString(char const * bytes, int length);
    /// `count` times `character`; a count below 1 gives the empty text.
    explicit CString(char character, int count = 1);
    ~CString() { drop(); }

    CString & operator=(CString const & other) noexcept;
    CString & operator=(CString && other) noexcept;
    CString & operator=(char const * text);
    CString & operator=(char character);

    int GetLength() const noexcept { return block()->length; }
    bool IsEmpty() const noexcept { return block()->length == 0; }
    void Empty() noexcept;
    char const * GetString() const noexcept { return data_; }
    operator char const *() const noexcept { return data_; }

    /// Requires: 0 <= index <= GetLength(); the place behind the last byte reads as NUL.
    char GetAt(int index) const noexcept { return data_[index]; }
    char operator[](int index) const noexcept { return data_[index]; }
    /// Requires: 0 <= index < GetLength().
    void SetAt(int index, char character);

    /// Below 0, 0 or above 0: byte by byte as unsigned, a proper prefix being the smaller.
    int Compare(CString const & other) const noexcept;
    int Compare(char const * other) const noexcept;
    /// The same with 'A' to 'Z' read as 'a' to 'z'; no other byte has a case.
    int CompareNoCase(CString const & other) const noexcept;
    int CompareNoCase(char const * other) const noexcept;

    /// Position of the first occurrence at or behind `start`, or -1. An empty text is found at
    /// `start` itself. A start below 0 or beyond the length gives -1, and so does a null text.
    int Find(CString const & text, int start = 0) const noexcept;
    int Find(char const * text, int start = 0) const noexcept;
    int Find(char character, int start = 0) const noexcept;
    /// Position of the last occurrence, or -1.
    int ReverseFind(char character) const noexcept;

    /// From `first` on, at most `count` bytes. A negative first is read as 0 and keeps the count; a
    /// negative count is 0.
    CString Mid(int first) const;
    CString Mid(int first, int count) const;
    CString Left(int count) const;
    CString Right(int count) const;
    /// Removes ASCII white space (9 to 13 and 32) at both ends.
    CString & Trim();

    /// printf forms. The decimal mark is `.` whatever the process's locale is.
    void Format(char const * format, ...) TVK_PRINTF_LIKE(2, 3);
    void FormatV(char const * format, va_list arguments) TVK_PRINTF_LIKE(2, 0);
    void AppendFormat(char const * format, ...) TVK_PRINTF_LIKE(2, 3);

    /// Inserts before `index`, which is clamped to 0 and to the length. Returns the new length.
    int Insert(int index, CString const & text);
    int Insert(int index, char const * text);
    int Insert(int index, char character);

    /// Makes room for `length` bytes; the text stays as it is.
    void Preallocate(int length);

    void Append(CString const & text);
    void Append(char const * text);
    void Append(char const * bytes, int length);
    void AppendChar(char character) { Append(&character, 1); }

    CString & operator+=(CString const & text) { return Append(text), *this; }
    CString & operator+=(char const * text) { return Append(text), *this; }
    CString & operator+=(char character) { return AppendChar(character), *this; }

    /// Room of at least `minimumLength` bytes and a NUL to write in, holding the text so far. It is
    /// this object's alone until ReleaseBuffer, the one operation that may follow.
    char * GetBuffer(int minimumLength = 0);
    /// Takes over what was written into the buffer: `newLength` bytes, or up to the first NUL when
    /// it is negative. Requires: newLength does not pass the room that GetBuffer was asked for.
    void ReleaseBuffer(int newLength = -1);

private:
    struct Block {
        mutable std::atomic<int> references;  // UNCOUNTED for the shared empty text
        int length;
        // Below 0 where the block stands inside a larger one: the bytes from here back to its start,
        // negated. There is room for the text alone then.
        int capacity;
    };
    struct EmptyText {
        Block block;
        char text[4];
    };
    static constexpr int UNCOUNTED = -1;
    static EmptyText EMPTY;

    // Reckoned from the whole, so that the way back to the block stays inside one object.
    static char * emptyText() noexcept { return reinterpret_cast<char *>(&EMPTY) + sizeof(Block); }
    Block * block() const noexcept { return reinterpret_cast<Block *>(data_ - sizeof(Block)); }
    void share() const noexcept {
        if (Block * const own = block(); own != &EMPTY.block) {
            own->references.fetch_add(1, std::memory_order_relaxed);
        }
    }
    void drop() noexcept {
        Block * const own = block();
        if (own == &EMPTY.block) {
            return;
        }
        // A count of 1 cannot rise behind our back: nobody else holds the block.
        if (own->references.load(std::memory_order_acquire) == 1 ||
            own->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            release(own);
        }
    }
    static char * allocate(int length);
    static void release(Block * block) noexcept;
    static CString concatenate(char const * left, int leftLength, char const * right,
                               int rightLength);
    bool isShared() const noexcept;
    int capacity() const noexcept;
    char * makeRoom(int length);
    void setLength(int length) noexcept;

    friend TVK_API CString operator+(CString const & left, CString const & right);
    friend TVK_API CString operator+(CString const & left, char const * right);
    friend TVK_API CString operator+(char const * left, CString const & right);
    friend TVK_API CString operator+(CString const & left, char right);
    friend TVK_API CString operator+(char left, CString const & right);
    friend class tvk::platform::EmbeddedText;

    char * data_;  // first byte of the text, right behind its Block
};

TVK_API CString operator+(CString const & left, CString const & right);
TVK_API CString operator+(CString const & left, char const * right);
TVK_API CString operator+(char const * left, CString const & right);
TVK_API CString operator+(CString const & left, char right);
TVK_API CString operator+(char left, CString const & right);

inline bool operator==(CString const & left, CString const & right) noexcept {
    return left.GetLength() == right.GetLength() &&
           std::memcmp(left.GetString(), right.GetString(),
                       static_cast<std::size_t>(left.GetLength())) == 0;
}
inline bool operator==(CString const & left, char const * right) noexcept {
    return left.Compare(right) == 0;
}
inline bool operator==(char const * left, CString const & right) noexcept { return right == left; }

inline bool operator!=(CString const & left, CString const & right) noexcept {
    return !(left == right);
}
inline bool operator!=(CString const & left, char const * right) noexcept {
    return !(left == right);
}
inline bool operator!=(char const * left, CString const & right) noexcept {
    return !(right == left);
}

inline bool operator<(CString const & left, CString const & right) noexcept {
    return left.Compare(right) < 0;
}
inline bool operator<(CString const & left, char const * right) noexcept {
    return left.Compare(right) < 0;
}
inline bool operator<(char const * left, CString const & right) noexcept {
    return right.Compare(left) > 0;
}

inline bool operator>(CString const & left, CString const & right) noexcept { return right < left; }
inline bool operator>(CString const & left, char const * right) noexcept { return right < left; }
inline bool operator>(char const * left, CString const & right) noexcept { return right < left; }

inline bool operator<=(CString const & left, CString const & right) noexcept {
    return !(right < left);
}
inline bool operator<=(CString const & left, char const * right) noexcept {
    return !(right < left);
}
inline bool operator<=(char const * left, CString const & right) noexcept {
    return !(right < left);
}

inline bool operator>=(CString const & left, CString const & right) noexcept {
    return !(left < right);
}
inline bool operator>=(CString const & left, char const * right) noexcept {
    return !(left < right);
}
inline bool operator>=(char const * left, CString const & right) noexcept {
    return !(left < right);
}

#if defined(__cpp_impl_three_way_comparison)
// Without these, <=> would compare the addresses that the texts convert to; pairs, tuples and vectors
// of texts are ordered by it in C++20.
inline std::strong_ordering operator<=>(CString const & left, CString const & right) noexcept {
    return left.Compare(right) <=> 0;
}
inline std::strong_ordering operator<=>(CString const & left, char const * right) noexcept {
    return left.Compare(right) <=> 0;
}
#endif

namespace tvk {
using ::CString;
}
