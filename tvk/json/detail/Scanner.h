#pragma once

#include <cstdint>
#include <cstring>

#include "tvk/json/JsonOptions.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/json/detail/HashPowers.h"
#include "tvk/json/detail/JsonSpace.h"
#include "tvk/json/detail/Scan.h"
#include "tvk/json/detail/ScannerErrors.h"

namespace tvk::detail {

/// One scan. It walks the input once with a pointer and calls the handler.
///
/// Block:   how many bytes are looked at together in plain text, see PlainBlock. A type of an
///          unnamed namespace, so that code for one processor is never linked into another's.
/// Handler: a class like TableHandler, whose functions are called inline. It tells by
///          TERMINATED_COPIES how texts reach it: true for decoded bytes in the scratch buffer with
///          a NUL behind them; false for slices of the input, without a NUL, where a text holds no
///          escape (a text with one comes from the scratch buffer in both cases, and has its NUL).
///          How to add one is told in Scan.h.
/// Scratch: one buffer holds, from its start, the text of the string being read, and from its far
/// end
///          downwards the kinds of the open containers, one byte each. Both fit: every open bracket
///          used up a byte of input, and a string with its quotes takes more input than scratch. So
///          a whole block that the input still has may also be stored behind the decoded text.
template <class Block, class Handler>
class Scanner {
public:
    Scanner(char const * data, unsigned int length, Handler & handler, int options)
        : data_(data),
          end_(data + length),
          length_(length),
          options_(options),
          handler_(handler),
          buffer_(new char[std::size_t{length} + 1]) {}
    Scanner(Scanner const &) = delete;
    Scanner & operator=(Scanner const &) = delete;
    ~Scanner() { delete[] buffer_; }

    unsigned int scan(ScanEntry entry) {
        return scanBy([this](char const * at) { return matchOneJsonValue(at); }, entry);
    }

protected:
    /// The scan, with `oneValue` to read one value and all that is nested in it.
    template <class OneValue>
    unsigned int scanBy(OneValue oneValue, ScanEntry entry) {
        char const * at = data_;
        switch (entry) {
            case ScanEntry::OBJECT:
                at = require(skip(at), '{');
                break;
            case ScanEntry::ARRAY:
                at = require(skip(at), '[');
                break;
            case ScanEntry::VALUE:
                at = skip(at);
                break;
            case ScanEntry::FIELDS:
                return positionOf(matchBareFields(oneValue, at));
        }
        return positionOf(oneValue(at));
    }

    static constexpr char OBJECT = '}';  // a container's kind is the byte that closes it
    static constexpr char ARRAY = ']';

    // Values and containers.

    /// One value with all that is nested in it; nothing at the end of the data.
    char const * matchOneJsonValue(char const * at) {
        unsigned int const outside = depth_;
        at = startValue(at);
        while (depth_ > outside) {
            at = kindOnTop() == OBJECT ? matchObjectFields(at) : matchArrayElements(at);
        }
        return at;
    }

    /// Goes on in the object on top, up to its end or to a container that a field of it opens.
    char const * matchObjectFields(char const * at) {
        unsigned int const own = depth_;
        do {
            bool found = false;
            at = nextField(at, &found);
            if (!found) {
                return closeContainer(at, OBJECT);
            }
            at = startValue(at);
        } while (depth_ == own);
        return at;
    }

    /// The same in the array on top.
    char const * matchArrayElements(char const * at) {
        unsigned int const own = depth_;
        do {
            bool found = false;
            at = nextElement(at, &found);
            if (!found) {
                return closeContainer(at, ARRAY);
            }
            at = startValue(at);
        } while (depth_ == own);
        return at;
    }

    /// Fields without braces around them, up to a `}` or the end of the data.
    template <class OneValue>
    char const * matchBareFields(OneValue oneValue, char const * at) {
        isFirst_ = true;
        for (;;) {
            bool found = false;
            at = nextField(at, &found);
            if (!found) {
                return at;
            }
            at = oneValue(at);
        }
    }

    /// Reads a scalar, or opens a container.
    char const * startValue(char const * at) {
        isFirst_ = false;
        if (at == end_) {
            return at;
        }
        switch (*at) {
            case '"':
                return stringValue(at + 1);
            case '{':
                openContainer(OBJECT);
                handler_.startObject();
                return at + 1;
            case '[':
                openContainer(ARRAY);
                handler_.startArray();
                return at + 1;
            case 't':
                if (!hasWord(at, "true")) {
                    failTrue(placeOf(at));
                }
                handler_.booleanValue(true);
                return at + 4;
            case 'f':
                if (!hasWord(at, "false")) {
                    failFalse(placeOf(at));
                }
                handler_.booleanValue(false);
                return at + 5;
            case 'n':
                if (!hasWord(at, "null")) {
                    failNull(placeOf(at));
                }
                handler_.nullValue();
                return at + 4;
            default:
                return numberValue(at);
        }
    }

    void openContainer(char kind) {
        buffer_[length_ - depth_] = kind;
        ++depth_;
        isFirst_ = true;
    }

    char kindOnTop() const { return buffer_[length_ - depth_ + 1]; }

    char const * closeContainer(char const * at, char kind) {
        at = require(at, kind) + 1;
        --depth_;
        isFirst_ = false;
        if (kind == OBJECT) {
            handler_.endObject();
        } else {
            handler_.endArray();
        }
        return at;
    }

    /// Goes to the next element, or to what stands in place of one: `]` or the end of the data.
    char const * nextElement(char const * at, bool * found) {
        at = skip(at);
        if (at == end_ || *at == ARRAY) {
            return at;
        }
        if (!isFirst_) {
            at = skip(require(at, ',') + 1);
            if (has(JSON_ALLOW_TRAILING_COMMA) && at != end_ && *at == ARRAY) {
                return at;
            }
        }
        *found = true;
        return at;
    }

    /// Reads the next field up to its value, or goes to what stands in place of one.
    char const * nextField(char const * at, bool * found) {
        at = skip(at);
        if (at == end_ || *at == OBJECT) {
            return at;
        }
        if (!isFirst_) {
            at = skip(require(at, ',') + 1);
            if (has(JSON_ALLOW_TRAILING_COMMA) && at != end_ && *at == OBJECT) {
                return at;
            }
        }
        *found = true;
        if (unsigned int const size = handler_.knownName(at, left(at)); size > 0) {
            return skip(at + size);
        }
        at = skip(require(skip(fieldName(at)), ':') + 1);
        return at;
    }

    char const * fieldName(char const * at) {
        if (char const * const behind = unquotedName(at); behind != nullptr) {
            return behind;
        }
        at = require(readStringValue<false>(require(at, '"') + 1), '"') + 1;
        handler_.fieldName(terminatedText(), textLength_);
        return at;
    }

    /// A name without quotes runs to the `:` or to the end of the data, space and closing brackets
    /// included. Null when it has quotes after all, or a byte that only a quoted name may hold.
    char const * unquotedName(char const * at) {
        if (!has(JSON_ALLOW_UNQUOTED_NAME)) {
            return nullptr;
        }
        char const * const name = at;
        for (; at != end_ && *at != ':'; ++at) {
            if (*at == '"' || *at == '\\' || *at == '[' || *at == '{' || *at == ',') {
                return nullptr;
            }
        }
        textLength_ = static_cast<unsigned int>(at - name);
        text_ = Handler::TERMINATED_COPIES ? buffer_ : name;
        if constexpr (Handler::TERMINATED_COPIES) {
            std::memcpy(buffer_, name, textLength_);
        }
        handler_.fieldName(terminatedText(), textLength_);
        return at;
    }

    // Deliberate: one more byte must stand behind a word; a stream may go on there.
    template <std::size_t SIZE>
    bool hasWord(char const * at, char const (&word)[SIZE]) const {
        return left(at) > SIZE - 1 && std::memcmp(at, word, SIZE - 1) == 0;
    }

    // Numbers.

    char const * numberValue(char const * at) {
        char const * const start = at;
        char const * fractionStart = nullptr;
        char const * exponentStart = nullptr;
        std::uint32_t hash = INITIAL_HASH;
        if (*at == '-') {
            hash = folded(hash, *at++);
            if (at == end_) {
                failNumberEnd(placeOf(start));
            }
        }
        if (*at == '0') {
            if (left(at) > 1 && isDigit(at[1])) {
                failLeadingZero(placeOf(at));
            }
            hash = folded(hash, *at++);
        } else if (isDigit(*at)) {
            at = digits(at, &hash);
        } else {
            failNumber(placeOf(at));
        }
        if (left(at) > 2 && *at == '.' && isDigit(at[1])) {
            fractionStart = at;
            hash = folded(hash, '.');
            at = digits(at + 1, &hash);
        }
        if (left(at) > 1 && (*at == 'e' || *at == 'E')) {
            exponentStart = at;  // Deliberate: also where no exponent follows, as in [1e]
            if (unsigned int const size = exponentPrefix(at); size > 0) {
                for (unsigned int i = 0; i < size; ++i) {
                    hash = folded(hash, at[i]);
                }
                at = digits(at + size, &hash);
            }
        }
        handler_.numberValue(hash, start, static_cast<unsigned int>(at - start), fractionStart,
                             exponentStart);
        return at;
    }

    char const * digits(char const * at, std::uint32_t * hash) const {
        std::uint32_t running = *hash;
        while (left(at) >= Block::SIZE) {
            Block const block(at);
            unsigned int const count = block.digitPrefix();
            running = block.folded(running, count);
            at += count;
            if (count < Block::SIZE) {
                *hash = running;
                return at;
            }
        }
        for (; at != end_ && isDigit(*at); ++at) {
            running = folded(running, *at);
        }
        *hash = running;
        return at;
    }

    /// The bytes before an exponent's digits: `e` and perhaps a sign. 0 where no exponent follows.
    unsigned int exponentPrefix(char const * at) const {
        if (left(at) <= 2) {
            return 0;
        }
        if (at[1] == '+' || at[1] == '-') {
            return left(at) > 3 && isDigit(at[2]) ? 2 : 0;
        }
        return isDigit(at[1]) ? 1 : 0;
    }

    // Strings.

    char const * stringValue(char const * at) {
        at = require(readStringValue<true>(at), '"') + 1;
        handler_.stringValue(stringHash_, terminatedText(), textLength_);
        return at;
    }

    /// The text just read. One in the scratch buffer gets its NUL.
    char const * terminatedText() {
        if (text_ == buffer_) {
            buffer_[textLength_] = '\0';
        }
        return text_;
    }

    /// Decodes a text into the buffer, up to the character that ends it: a quote, a NUL or the end
    /// of the data. Leaves its place, its length and, where HASHED, its hash.
    ///
    /// Deliberate: characters are judged by their code points and trail bytes are not tested. C0 A2
    /// ends a text like a quote and C3 swallows a quote behind it; peers' hashes rely on it.
    template <bool HASHED>
    char const * readStringValue(char const * at) {
        char const * const start = at;
        char * out = buffer_;
        std::uint32_t hash = INITIAL_HASH;
        for (;;) {
            while (left(at) >= Block::SIZE) {
                Block const block(at);
                block.store(out);
                unsigned int const count = block.plainPrefix();
                if constexpr (HASHED) {
                    hash = block.folded(hash, count);
                }
                at += count;
                out += count;
                if (count < Block::SIZE) {
                    break;
                }
            }
            for (; at != end_ && isPlain(*at); ++at) {
                *out++ = *at;
                hash = folded(hash, *at);
            }
            if (at == end_ || *at == '"') {
                break;
            }
            Text const text = readUnplain({at, out, hash});
            if (text.at == at) {
                break;
            }
            at = text.at;
            out = text.out;
            hash = text.hash;
        }
        textLength_ = static_cast<unsigned int>(out - buffer_);
        stringHash_ = hash;
        // Every escape is longer than what it stands for.
        bool const hasEscape = textLength_ != positionOf(at) - positionOf(start);
        text_ = Handler::TERMINATED_COPIES || hasEscape ? buffer_ : start;
        return at;
    }

    /// A text that is being decoded: the next byte of input, the next place for output, and the hash
    /// of the output so far.
    struct Text {
        char const * at;
        char * out;
        std::uint32_t hash;

        void append(char byte) {
            *out++ = byte;
            hash = Scanner::folded(hash, byte);
        }
    };

    /// Reads escapes, or sequences of 2 to 6 bytes, as long as they follow one another. Stays at what
    /// ends the text.
    Text readUnplain(Text text) const {
        if (*text.at == '\\') {
            do {
                text = readEscape(text.at, text, text.at + 1);
            } while (text.at != end_ && *text.at == '\\');
            return text;
        }
        while (text.at != end_ && isLead(*text.at)) {
            unsigned int const size = sequenceLength(text.at);
            unsigned int const codePoint = readSequence(size, &text);
            if (codePoint == '\\') {
                return readEscape(text.at, text, text.at + size);
            }
            if (codePoint == '"' || codePoint == 0) {
                return text;
            }
        }
        return text;
    }

    static unsigned int readSequence(unsigned int size, Text * text) {
        switch (size) {
            case 2:
                return readSequence<2>(text);
            case 3:
                return readSequence<3>(text);
            case 4:
                return readSequence<4>(text);
            case 5:
                return readSequence<5>(text);
            default:
                return readSequence<6>(text);
        }
    }

    /// The code point. The sequence is taken unless the code point is one that has a meaning.
    template <unsigned int SIZE>
    static unsigned int readSequence(Text * text) {
        unsigned int codePoint = static_cast<unsigned char>(*text->at) & (0x7Fu >> SIZE);
        for (unsigned int i = 1; i < SIZE; ++i) {
            codePoint = codePoint << 6 | (static_cast<unsigned char>(text->at[i]) & 0x3Fu);
        }
        if (codePoint != '\\' && codePoint != '"' && codePoint != 0) {
            for (unsigned int i = 0; i < SIZE; ++i) {
                text->append(text->at[i]);
            }
            text->at += SIZE;
        }
        return codePoint;
    }

    /// Of the sequence at `at`, which is known to fit the data.
    unsigned int sequenceLength(char const * at) const {
        unsigned int const size = announcedLength(static_cast<unsigned char>(*at));
        if (size == 0) {
            failLeadByte(placeOf(at));
        }
        if (left(at) < size) {
            failCutSequence(placeOf(at), size);
        }
        return size;
    }

    /// 2 to 6 bytes, or 0 for a byte that leads no sequence. Requires: lead >= 0x80.
    static unsigned int announcedLength(unsigned int lead) {
        return lead < 0xC0   ? 0
               : lead < 0xE0 ? 2
               : lead < 0xF0 ? 3
               : lead < 0xF8 ? 4
               : lead < 0xFC ? 5
               : lead < 0xFE ? 6
                             : 0;
    }

    /// `at` is behind the backslash, which may be one of more than one byte.
    Text readEscape(char const * backslash, Text text, char const * at) const {
        if (left(at) <= 1) {
            failEscapeEnd(placeOf(backslash));
        }
        char const escape = *at;
        text.at = at + 1;
        switch (escape) {
            case '\\':
            case '/':
            case '"':
                text.append(escape);
                break;
            case 'n':
                text.append('\n');
                break;
            case 'r':
                text.append('\r');
                break;
            case 't':
                text.append('\t');
                break;
            case 'f':
                text.append('\f');
                break;
            case 'b':
                text.append('\b');
                break;
            case 'u':
                return readUnicodeEscape(backslash, text);
            default:
                failEscape(placeOf(backslash), escape, positionOf(text.at));
        }
        return text;
    }

    Text readUnicodeEscape(char const * backslash, Text text) const {
        int codePoint = match4HexChar(text.at);
        text.at += 4;
        if (JsonUtil::isHighSurrogate(codePoint)) {
            char const * const second = require(require(text.at, '\\') + 1, 'u') + 1;
            int const low = match4HexChar(second);
            if (static_cast<unsigned int>(low - 0xDC00) > 0x3FF) {
                failSurrogates(placeOf(backslash), codePoint, low);
            }
            codePoint = JsonUtil::surrogatesPairToCodePoint(codePoint, low);
            text.at = second + 4;
        }
        char bytes[6];
        int const size = JsonUtil::utf8Encode(bytes, sizeof bytes, codePoint);
        for (int i = 0; i < size; ++i) {
            text.append(bytes[i]);
        }
        return text;
    }

    // Deliberate: one more byte must stand behind the four digits; a stream may go on there.
    int match4HexChar(char const * at) const {
        if (left(at) <= 4) {
            failHexEnd(placeOf(at));
        }
        int value = 0;
        for (unsigned int i = 0; i < 4; ++i) {
            int const digit = hexDigit(at[i]);
            if (digit < 0) {
                failHexDigit(placeOf(at), i);
            }
            value = value * 16 + digit;
        }
        return value;
    }

    // Places and bytes.

    /// Passes over space and, where the options have them, comments.
    char const * skip(char const * at) const {
        if (at != end_ && *at > ' ' && *at != '#' && *at != '/') {
            return at;
        }
        for (; at != end_; ++at) {
            if (isCommentStart(at)) {
                at = lineEnd(at);
                if (at == end_) {
                    return at;
                }
            } else if (!isSpace(*at)) {
                return at;
            } else if (left(at) > Block::SIZE) {
                at += Block(at + 1).blankPrefix();
            }
        }
        return at;
    }

    bool isCommentStart(char const * at) const { return startsComment(at, left(at), options_); }

    char const * lineEnd(char const * at) const {
        void const * const found = std::memchr(at, '\n', left(at));
        return found == nullptr ? end_ : static_cast<char const *>(found);
    }

    char const * require(char const * at, char tag) const {
        if (at == end_ || *at != tag) {
            failTag(placeOf(at), tag);
        }
        return at;
    }

    bool has(int option) const { return (options_ & option) != 0; }
    std::size_t left(char const * at) const { return static_cast<std::size_t>(end_ - at); }
    unsigned int positionOf(char const * at) const { return static_cast<unsigned int>(at - data_); }
    ScanPlace placeOf(char const * at) const { return {data_, length_, positionOf(at)}; }

    static constexpr std::uint32_t INITIAL_HASH = SimpleObjectCache::HASH_CODE_INITIAL_VALUE;

    static std::uint32_t folded(std::uint32_t hash, char byte) {
        return hash * HASH_FACTOR + static_cast<std::uint32_t>(static_cast<signed char>(byte));
    }
    static bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }
    static bool isLead(char byte) { return static_cast<signed char>(byte) < 0; }
    static bool isPlain(char byte) {
        return static_cast<signed char>(byte) > 0 && byte != '"' && byte != '\\';
    }
    static int hexDigit(char byte) {
        if (isDigit(byte)) {
            return byte - '0';
        }
        char const lower = static_cast<char>(byte | 0x20);
        return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
    }

    char const * const data_;
    char const * const end_;
    unsigned int const length_;
    int const options_;
    Handler & handler_;
    char * const buffer_;           // length_ + 1 bytes
    unsigned int depth_ = 0;        // open containers
    bool isFirst_ = false;          // nothing has been read in the container on top
    char const * text_ = nullptr;   // of the string just read
    unsigned int textLength_ = 0;   // likewise
    std::uint32_t stringHash_ = 0;  // likewise
};

/// What makes a variant of the scanner of a Block.
template <class Block>
struct CarefulCode {
    template <class Handler>
    static unsigned int scan(ScanEntry entry, char const * data, unsigned int length,
                             Handler & handler, int options) {
        return Scanner<Block, Handler>(data, length, handler, options).scan(entry);
    }
};

}  // namespace tvk::detail
