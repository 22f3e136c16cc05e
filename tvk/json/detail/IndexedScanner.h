#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "tvk/json/detail/JsonSpace.h"
#include "tvk/json/detail/Scanner.h"
#include "tvk/json/detail/TokenIndex.h"
#include "tvk/platform/TargetCode.h"

namespace tvk::detail {

/// A scan along an index of tokens, by which the next token is known before the last one has been
/// read. Whatever is not plain sailing goes to the careful scanner below, a field or an element at a
/// time: it finds the state that it would have come to by itself, so events, positions and failures
/// are its own. Where the index ends, it does the rest.
///
/// Code: its Block reads texts and numbers (see Sse41Block), its Masks make the index (see
/// Avx2Masks).
template <class Code, class Handler>
class IndexedScanner : private Scanner<typename Code::Block, Handler> {
public:
    IndexedScanner(char const * data, unsigned int length, Handler & handler, int options)
        : Careful(data, length, handler, options),
          lastBlock_(data + (length < Block::SIZE ? 0 : length - Block::SIZE)),
          index_(data, length),
          next_(index_.begin()) {}

    unsigned int scan(ScanEntry entry) {
        if (length_ < Index::SHORTEST || has(NOT_INDEXED)) {
            return Careful::scan(entry);
        }
        return this->scanBy([this](char const * at) { return matchOneJsonValue(at); }, entry);
    }

private:
    using Block = typename Code::Block;
    using Careful = Scanner<Block, Handler>;
    using Index = TokenIndex<typename Code::Masks>;

    using Careful::ARRAY;
    using Careful::buffer_;
    using Careful::data_;
    using Careful::depth_;
    using Careful::handler_;
    using Careful::has;
    using Careful::INITIAL_HASH;
    using Careful::isFirst_;
    using Careful::length_;
    using Careful::OBJECT;

    /// What quotes and brackets may mean something else under.
    static constexpr int NOT_INDEXED =
        JSON_ALLOW_SLASH_COMMENT | JSON_ALLOW_HASH_COMMENT | JSON_ALLOW_UNQUOTED_NAME;

    /// A field takes up to four entries: the quotes of its name and those of its value.
    static constexpr std::ptrdiff_t LOOK_AHEAD = 4;

    /// Where the scan is: `at` is behind a token, `next` the first entry there.
    struct Cursor {
        char const * at;
        std::uint32_t const * next;
    };

    char const * matchOneJsonValue(char const * at) {
        unsigned int const outside = depth_;
        Cursor cursor = movedTo(this->startValue(at), next_);
        while (depth_ > outside) {
            cursor = this->kindOnTop() == OBJECT ? fields(cursor) : elements(cursor);
        }
        next_ = cursor.next;
        return cursor.at;
    }

    /// Goes on in the object on top, up to its end or to a container that a field of it opens, or
    /// past something that needs care.
    TVK_INLINE Cursor fields(Cursor cursor) {
        if (!hasAhead(&cursor)) {
            return carefulField(cursor);
        }
        char const * open = data_ + cursor.next[0];
        if (!(isFirst_ ? mayStart(cursor, open) : *cursor.at == ',')) {
            return endField(cursor, open);
        }
        for (;;) {
            char const * const close = data_ + cursor.next[1];
            if (*open != '"' || *close != '"' || close[1] != ':') [[unlikely]] {
                return endField(cursor, open);
            }
            name(open + 1, close);
            isFirst_ = false;
            cursor = {close + 2, cursor.next + 2};
            if (opensContainer(&cursor)) {
                return cursor;
            }
            if (!hasAhead(&cursor)) [[unlikely]] {
                return carefulField(cursor);
            }
            open = data_ + cursor.next[0];
            if (*cursor.at != ',') {
                return endField(cursor, open);
            }
        }
    }

    /// The same in the array on top.
    TVK_INLINE Cursor elements(Cursor cursor) {
        if (!hasAhead(&cursor)) {
            return carefulElement(cursor);
        }
        char const * start = data_ + cursor.next[0];
        if (!(isFirst_ ? mayStart(cursor, start) : *cursor.at == ',')) {
            return endElement(cursor, start);
        }
        for (;;) {
            if (*start == ARRAY) [[unlikely]] {
                return endElement(cursor, start);
            }
            isFirst_ = false;
            if (opensContainer(&cursor)) {
                return cursor;
            }
            if (!hasAhead(&cursor)) [[unlikely]] {
                return carefulElement(cursor);
            }
            start = data_ + cursor.next[0];
            if (*cursor.at != ',') {
                return endElement(cursor, start);
            }
        }
    }

    /// Whether the index reaches far enough, once it has been continued.
    TVK_INLINE bool hasAhead(Cursor * cursor) {
        if (index_.end() - cursor->next >= LOOK_AHEAD) [[likely]] {
            return true;
        }
        *cursor = continued(*cursor);
        return index_.end() - cursor->next >= LOOK_AHEAD;
    }

    TVK_NOINLINE Cursor continued(Cursor cursor) {
        while (index_.end() - cursor.next < LOOK_AHEAD && index_.refill(&cursor.next)) {
            cursor = movedTo(cursor.at, cursor.next);
        }
        return cursor;
    }

    /// Whether nothing but space stands between the cursor and the next entry, at `start`.
    static bool mayStart(Cursor cursor, char const * start) {
        return cursor.at == start || isSpace(*cursor.at);
    }

    Cursor endField(Cursor cursor, char const * bracket) {
        return *bracket == OBJECT && mayStart(cursor, bracket) ? close(cursor, OBJECT)
                                                               : carefulField(cursor);
    }

    Cursor endElement(Cursor cursor, char const * bracket) {
        return *bracket == ARRAY && mayStart(cursor, bracket) ? close(cursor, ARRAY)
                                                              : carefulElement(cursor);
    }

    TVK_INLINE Cursor close(Cursor cursor, char kind) {
        --depth_;
        isFirst_ = false;
        if (kind == OBJECT) {
            handler_.endObject();
        } else {
            handler_.endArray();
        }
        return {data_ + cursor.next[0] + 1, cursor.next + 1};
    }

    /// Reads the value at the next entry. Whether it is a container, which then is on top.
    TVK_INLINE bool opensContainer(Cursor * cursor) {
        char const * const at = data_ + cursor->next[0];
        switch (*at) {
            case '"':
                *cursor = string(at + 1, cursor->next);
                return false;
            case '{':
                *cursor = {at + 1, cursor->next + 1};
                this->openContainer(OBJECT);
                handler_.startObject();
                return true;
            case '[':
                *cursor = {at + 1, cursor->next + 1};
                this->openContainer(ARRAY);
                handler_.startArray();
                return true;
            case '-':
            case '0':
            case '1':
            case '2':
            case '3':
            case '4':
            case '5':
            case '6':
            case '7':
            case '8':
            case '9':
                *cursor = {number(at), cursor->next + 1};
                return false;
            default:
                *cursor = {this->startValue(at), cursor->next + 1};
                return false;
        }
    }

    // Texts without escapes, and numbers. Where the input has a whole block behind them, whole blocks
    // are read, and so there is room to store them.

    TVK_INLINE void name(char const * text, char const * close) {
        auto const size = static_cast<unsigned int>(close - text);
        if constexpr (!Handler::TERMINATED_COPIES) {
            handler_.fieldName(text, size);
            return;
        }
        if (close <= lastBlock_) [[likely]] {
            unsigned int done = 0;
            do {
                Block(text + done).store(buffer_ + done);
                done += Block::SIZE;
            } while (done < size);
        } else {
            std::memcpy(buffer_, text, size);
        }
        buffer_[size] = '\0';
        handler_.fieldName(buffer_, size);
    }

    TVK_INLINE Cursor string(char const * text, std::uint32_t const * next) {
        char const * const close = data_ + next[1];
        if (*close != '"' || close > lastBlock_) [[unlikely]] {
            return unplainString({text, next + 1});
        }
        auto const size = static_cast<unsigned int>(close - text);
        std::uint32_t const hash = taken(text, size, buffer_, INITIAL_HASH);
        if constexpr (Handler::TERMINATED_COPIES) {
            buffer_[size] = '\0';
            handler_.stringValue(hash, buffer_, size);
        } else {
            handler_.stringValue(hash, text, size);
        }
        return {close + 1, next + 2};
    }

    /// The hash with a text folded in. Where copies are wanted, it is copied.
    template <bool COPIED = Handler::TERMINATED_COPIES>
    TVK_INLINE static std::uint32_t taken(char const * text, unsigned int size, char * output,
                                          std::uint32_t hash) {
        for (; size > Block::SIZE; size -= Block::SIZE) {
            Block const block(text);
            if constexpr (COPIED) {
                block.store(output);
            }
            hash = block.folded(hash);
            text += Block::SIZE;
            output += Block::SIZE;
        }
        Block const block(text);
        if constexpr (COPIED) {
            block.store(output);
        }
        return block.folded(hash, size);
    }

    /// A text with escapes, which are among the entries, or one near the end of the input.
    TVK_NOINLINE Cursor unplainString(Cursor cursor) {
        typename Careful::Text text = {cursor.at, buffer_, INITIAL_HASH};
        for (;;) {
            if (cursor.next == index_.end()) {
                cursor.next = continued({text.at, cursor.next}).next;
            }
            char const * const stop =
                cursor.next == index_.end() ? lastBlock_ + 1 : data_ + *cursor.next;
            if (stop > lastBlock_) {
                return movedTo(this->stringValue(cursor.at), cursor.next);
            }
            auto const size = static_cast<unsigned int>(stop - text.at);
            text.hash = taken<true>(text.at, size, text.out, text.hash);
            text.out += size;
            if (*stop == '"') {
                auto const length = static_cast<unsigned int>(text.out - buffer_);
                *text.out = '\0';
                handler_.stringValue(text.hash, buffer_, length);
                return {stop + 1, cursor.next + 1};
            }
            text = this->readEscape(stop, text, stop + 1);
            cursor.next = movedTo(text.at, cursor.next).next;
        }
    }

    TVK_INLINE char const * number(char const * at) {
        if (at > lastBlock_) [[unlikely]] {
            return this->numberValue(at);
        }
        Block const block(at);
        Digits const number(at, block.digits(), Block::SIZE);
        if (!number.isWhole) [[unlikely]] {
            return this->numberValue(at);
        }
        handler_.numberValue(block.folded(INITIAL_HASH, number.size), at, number.size,
                             number.fractionStart, nullptr);
        return at + number.size;
    }

    /// A number of digits and perhaps a sign and a fraction. Not whole where it is none, has an
    /// exponent, or may go on behind the `room` bytes that were looked at.
    struct Digits {
        TVK_INLINE Digits(char const * at, std::uint64_t digits, unsigned int room) {
            unsigned int const sign = *at == '-' ? 1 : 0;
            std::uint64_t others = ~digits & ~std::uint64_t{sign};
            size = static_cast<unsigned int>(std::countr_zero(others));
            if (size == sign || size >= room || (at[sign] == '0' && size > sign + 1)) [[unlikely]] {
                return;
            }
            if (at[size] == '.') {
                others &= others - 1;
                auto const end = static_cast<unsigned int>(std::countr_zero(others));
                if (end == size + 1 || end >= room) [[unlikely]] {
                    return;
                }
                fractionStart = at + size;
                size = end;
            }
            isWhole = (at[size] | 0x20) != 'e';
        }

        unsigned int size;
        char const * fractionStart = nullptr;
        bool isWhole = false;
    };

    // The careful scanner's steps.

    TVK_NOINLINE Cursor carefulField(Cursor cursor) {
        bool found = false;
        char const * const at = this->nextField(cursor.at, &found);
        return movedTo(found ? this->startValue(at) : this->closeContainer(at, OBJECT),
                       cursor.next);
    }

    TVK_NOINLINE Cursor carefulElement(Cursor cursor) {
        bool found = false;
        char const * const at = this->nextElement(cursor.at, &found);
        return movedTo(found ? this->startValue(at) : this->closeContainer(at, ARRAY), cursor.next);
    }

    /// With the first entry at or behind `at`.
    Cursor movedTo(char const * at, std::uint32_t const * next) const {
        while (next != index_.end() && data_ + *next < at) {
            ++next;
        }
        return {at, next};
    }

    char const * const lastBlock_;  // the last place where one can be read; not with a short text
    Index index_;
    std::uint32_t const * next_;  // the first entry that has not been read, between two values
};

/// What makes a variant of the scanner of a Block and of Masks, both of unnamed namespaces.
template <class BlockType, class MasksType>
struct IndexedCode {
    using Block = BlockType;
    using Masks = MasksType;

    template <class Handler>
    static unsigned int scan(ScanEntry entry, char const * data, unsigned int length,
                             Handler & handler, int options) {
        return IndexedScanner<IndexedCode, Handler>(data, length, handler, options).scan(entry);
    }
};

}  // namespace tvk::detail
