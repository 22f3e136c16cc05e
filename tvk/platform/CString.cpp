#include "tvk/platform/CString.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>
#include <string_view>

#include "tvk/platform/CharacterClass.h"
#include "tvk/platform/Format.h"

namespace {

using tvk::platform::isSpace;
using tvk::platform::toLower;

constexpr int MAXIMUM_LENGTH = std::numeric_limits<int>::max();

std::size_t bytes(int length) { return static_cast<std::size_t>(length); }

int lengthOf(char const * text) {
    std::size_t const length = text == nullptr ? 0 : std::strlen(text);
    if (length > bytes(MAXIMUM_LENGTH)) {
        throw std::bad_alloc();
    }
    return static_cast<int>(length);
}

int sumOf(int length, int more) {
    if (more > MAXIMUM_LENGTH - length) {
        throw std::bad_alloc();
    }
    return length + more;
}

void requireBytes(char const * text, int length) {
    if (length < 0 || (length > 0 && text == nullptr)) {
        throw std::bad_alloc();
    }
}

/// The allocator deals in steps of 16 bytes; what it gives anyway is used as room. That is what
/// textRoom() promises too.
int roundedCapacity(int length, std::size_t besides) {
    constexpr std::size_t STEP = 16;
    std::size_t const rounded = (bytes(length) + besides + STEP - 1) / STEP * STEP - besides;
    return static_cast<int>(std::min(rounded, bytes(MAXIMUM_LENGTH)));
}

std::string_view viewOf(char const * text) {
    return text == nullptr ? std::string_view() : std::string_view(text);
}

std::string_view viewOf(CString const & text) {
    return std::string_view(text.GetString(), bytes(text.GetLength()));
}

int compareLengths(std::string_view left, std::string_view right) {
    return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

int compareBytes(std::string_view left, std::string_view right) {
    int const order = std::memcmp(left.data() == nullptr ? "" : left.data(),
                                  right.data() == nullptr ? "" : right.data(),
                                  std::min(left.size(), right.size()));
    if (order != 0) {
        return order < 0 ? -1 : 1;
    }
    return compareLengths(left, right);
}

int compareBytesNoCase(std::string_view left, std::string_view right) {
    std::size_t const common = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < common; ++i) {
        auto const leftByte = static_cast<unsigned char>(toLower(left[i]));
        auto const rightByte = static_cast<unsigned char>(toLower(right[i]));
        if (leftByte != rightByte) {
            return leftByte < rightByte ? -1 : 1;
        }
    }
    return compareLengths(left, right);
}

int findIn(std::string_view text, std::string_view wanted, int start) {
    if (start < 0 || bytes(start) > text.size()) {
        return -1;
    }
    std::size_t const found = text.find(wanted, bytes(start));
    return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

bool pointsInto(std::string_view text, char const * place) {
    return !std::less<char const *>()(place, text.data()) &&
           !std::less<char const *>()(text.data() + text.size(), place);
}

}  // namespace

constinit CString::EmptyText CString::EMPTY = {{UNCOUNTED, 0, 0}, {0, 0, 0, 0}};

/// A block with room for `length` bytes and with the empty text in it.
char * CString::allocate(int length) {
    static_assert(offsetof(EmptyText, text) == sizeof(Block), "text follows its block at once");
    int const capacity = roundedCapacity(length, sizeof(Block) + 1);
    void * const memory = std::malloc(sizeof(Block) + bytes(capacity) + 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    new (memory) Block{1, 0, capacity};
    char * const text = static_cast<char *>(memory) + sizeof(Block);
    text[0] = '\0';
    return text;
}

void CString::release(Block * block) noexcept {
    int const beforeBlock = std::min(block->capacity, 0);
    block->~Block();
    std::free(reinterpret_cast<char *>(block) + beforeBlock);
}

bool CString::isShared() const noexcept {
    return block()->references.load(std::memory_order_acquire) != 1;
}

/// The longest text that the block has room for.
int CString::capacity() const noexcept {
    return block()->capacity < 0 ? block()->length : block()->capacity;
}

void CString::setLength(int length) noexcept {
    block()->length = length;
    data_[length] = '\0';
}

/// Makes the text this object's own with room for `length` bytes, and returns it.
char * CString::makeRoom(int length) {
    if (block() == &EMPTY.block) {
        return data_ = allocate(length);
    }
    int const room = capacity();
    if (!isShared() && room >= length) {
        return data_;
    }
    int const kept = block()->length;
    int wanted = std::max(length, kept);
    if (length > room && kept > 0) {
        int const half = room / 2;  // geometric growth keeps repeated appending linear
        wanted = std::max(wanted, room > MAXIMUM_LENGTH - half ? MAXIMUM_LENGTH - 1 : room + half);
    }
    char * const fresh = allocate(wanted);
    std::memcpy(fresh, data_, bytes(kept) + 1);
    drop();
    data_ = fresh;
    block()->length = kept;
    return data_;
}

CString CString::concatenate(char const * left, int leftLength, char const * right,
                             int rightLength) {
    CString result;
    result.Preallocate(sumOf(leftLength, rightLength));
    result.Append(left, leftLength);
    result.Append(right, rightLength);
    return result;
}

CString::CString(char const * text) : CString(text == nullptr ? "" : text, lengthOf(text)) {}

CString::CString(char const * bytesOfText, int length) : data_(emptyText()) {
    requireBytes(bytesOfText, length);
    if (length > 0) {
        data_ = allocate(length);
        std::memcpy(data_, bytesOfText, bytes(length));
        setLength(length);
    }
}

CString::CString(char character, int count) : data_(emptyText()) {
    if (count > 0) {
        data_ = allocate(count);
        std::memset(data_, static_cast<unsigned char>(character), bytes(count));
        setLength(count);
    }
}

CString & CString::operator=(CString const & other) noexcept {
    other.share();
    drop();
    data_ = other.data_;
    return *this;
}

CString & CString::operator=(CString && other) noexcept {
    if (this != &other) {
        drop();
        data_ = other.data_;
        other.data_ = emptyText();
    }
    return *this;
}

CString & CString::operator=(char const * text) { return *this = CString(text); }

CString & CString::operator=(char character) { return *this = CString(character); }

void CString::Empty() noexcept {
    drop();
    data_ = emptyText();
}

void CString::SetAt(int index, char character) {
    assert(index >= 0 && index < GetLength());
    makeRoom(GetLength())[index] = character;
}

int CString::Compare(CString const & other) const noexcept {
    return compareBytes(viewOf(*this), viewOf(other));
}

int CString::Compare(char const * other) const noexcept {
    return compareBytes(viewOf(*this), viewOf(other));
}

int CString::CompareNoCase(CString const & other) const noexcept {
    return compareBytesNoCase(viewOf(*this), viewOf(other));
}

int CString::CompareNoCase(char const * other) const noexcept {
    return compareBytesNoCase(viewOf(*this), viewOf(other));
}

int CString::Find(CString const & text, int start) const noexcept {
    return findIn(viewOf(*this), viewOf(text), start);
}

int CString::Find(char const * text, int start) const noexcept {
    return text == nullptr ? -1 : findIn(viewOf(*this), viewOf(text), start);
}

int CString::Find(char character, int start) const noexcept {
    return findIn(viewOf(*this), std::string_view(&character, 1), start);
}

int CString::ReverseFind(char character) const noexcept {
    std::size_t const found = viewOf(*this).rfind(character);
    return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

CString CString::Mid(int first) const { return Mid(first, GetLength()); }

CString CString::Mid(int first, int count) const {
    // Deliberate: a first below 0 does not shorten the count; callers cut the front of a text this way.
    int const begin = std::clamp(first, 0, GetLength());
    int const kept = std::clamp(count, 0, GetLength() - begin);
    return kept == GetLength() ? *this : CString(data_ + begin, kept);
}

CString CString::Left(int count) const { return Mid(0, count); }

CString CString::Right(int count) const {
    int const kept = std::clamp(count, 0, GetLength());
    return Mid(GetLength() - kept, kept);
}

CString & CString::Trim() {
    int end = GetLength();
    while (end > 0 && isSpace(data_[end - 1])) {
        --end;
    }
    int begin = 0;
    while (begin < end && isSpace(data_[begin])) {
        ++begin;
    }
    int const kept = end - begin;
    if (kept == GetLength()) {
        return *this;
    }
    if (kept == 0 || isShared()) {
        return *this = CString(data_ + begin, kept);
    }
    std::memmove(data_, data_ + begin, bytes(kept));
    setLength(kept);
    return *this;
}

void CString::Format(char const * format, ...) {
    va_list arguments;
    va_start(arguments, format);
    FormatV(format, arguments);
    va_end(arguments);
}

void CString::FormatV(char const * format, va_list arguments) {
    // Built apart: the arguments may be characters of this very text.
    *this = tvk::platform::formatted(format, arguments);
}

void CString::AppendFormat(char const * format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CString const more = tvk::platform::formatted(format, arguments);
    va_end(arguments);
    Append(more);
}

int CString::Insert(int index, CString const & text) {
    if (text.IsEmpty()) {
        return GetLength();
    }
    CString const inserted = text;  // keeps the bytes alive when `text` is this object
    int const length = GetLength();
    int const added = inserted.GetLength();
    int const place = std::clamp(index, 0, length);
    makeRoom(sumOf(length, added));
    std::memmove(data_ + place + added, data_ + place, bytes(length - place));
    std::memcpy(data_ + place, inserted.data_, bytes(added));
    setLength(length + added);
    return length + added;
}

int CString::Insert(int index, char const * text) { return Insert(index, CString(text)); }

int CString::Insert(int index, char character) { return Insert(index, CString(character)); }

void CString::Preallocate(int length) {
    if (length > capacity()) {
        makeRoom(length);
    }
}

void CString::Append(CString const & text) { Append(text.data_, text.GetLength()); }

void CString::Append(char const * text) { Append(text, lengthOf(text)); }

void CString::Append(char const * added, int length) {
    requireBytes(added, length);
    if (length == 0) {
        return;
    }
    int const before = GetLength();
    // Own characters stay alive in a second reference while makeRoom moves the text elsewhere.
    CString const own = pointsInto(viewOf(*this), added) ? *this : CString();
    makeRoom(sumOf(before, length));
    std::memcpy(data_ + before, added, bytes(length));
    setLength(before + length);
}

char * CString::GetBuffer(int minimumLength) {
    return makeRoom(std::max({minimumLength, GetLength(), 0}));
}

void CString::ReleaseBuffer(int newLength) {
    if (block() == &EMPTY.block) {
        return;
    }
    int const room = capacity();
    assert(newLength <= room);
    if (newLength < 0) {
        void const * const end = std::memchr(data_, 0, bytes(room));
        newLength =
            end == nullptr ? room : static_cast<int>(static_cast<char const *>(end) - data_);
    }
    setLength(std::min(newLength, room));
}

CString operator+(CString const & left, CString const & right) {
    return CString::concatenate(left.data_, left.GetLength(), right.data_, right.GetLength());
}

CString operator+(CString const & left, char const * right) {
    return CString::concatenate(left.data_, left.GetLength(), right, lengthOf(right));
}

CString operator+(char const * left, CString const & right) {
    return CString::concatenate(left, lengthOf(left), right.data_, right.GetLength());
}

CString operator+(CString const & left, char right) {
    return CString::concatenate(left.data_, left.GetLength(), &right, 1);
}

CString operator+(char left, CString const & right) {
    return CString::concatenate(&left, 1, right.data_, right.GetLength());
}
