#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "tests/support/EventRecorder.h"
#include "tests/support/ReferenceUtf8.h"
#include "tvk/json/JsonOptions.h"

namespace tvk::test {

/// The four ways into the scanner.
enum class ScanMode { OBJECT, ARRAY, VALUE, FIELDS };

/// The rules of the JSON scanner, one after the other and a byte at a time, to compare the library
/// with. It recurses with each open bracket, so its users keep their inputs shallow (5,000 levels
/// are fine on an ordinary stack, also with sanitizers).
class ReferenceScanner {
public:
    static ScanOutcome scan(ScanMode mode, std::string_view input, int options) {
        ReferenceScanner scanner(input, options);
        ScanOutcome outcome;
        try {
            scanner.matchWhole(mode);
            outcome.position = static_cast<unsigned int>(scanner.position_);
        } catch (Failure const & failure) {
            outcome.failure = failure.text;
        }
        outcome.events = scanner.recorder_.takeEvents();
        return outcome;
    }

    /// Of the bytes as signed values.
    static unsigned int hashOf(std::string_view bytes) {
        std::uint32_t hash = 0x539C1505;
        for (char const byte : bytes) {
            hash = hash * 33 + static_cast<std::uint32_t>(static_cast<signed char>(byte));
        }
        return hash;
    }

private:
    struct Failure {
        std::string text;
    };

    ReferenceScanner(std::string_view input, int options)
        : input_(input), options_(options), recorder_(input.data()) {}

    // Values and containers.

    void matchWhole(ScanMode mode) {
        switch (mode) {
            case ScanMode::OBJECT:
                skip();
                require('{');
                matchOneJsonValue();
                break;
            case ScanMode::ARRAY:
                skip();
                require('[');
                matchOneJsonValue();
                break;
            case ScanMode::VALUE:
                skip();
                matchOneJsonValue();
                break;
            case ScanMode::FIELDS:
                matchObjectFields();
                break;
        }
    }

    void matchOneJsonValue() {
        if (atEnd()) {
            return;
        }
        switch (here()) {
            case '"':
                matchString();
                break;
            case '{':
                ++position_;
                recorder_.add({JsonEvent::START_OBJECT});
                matchObjectFields();
                requireAndStep('}');
                recorder_.add({JsonEvent::END_OBJECT});
                break;
            case '[':
                ++position_;
                recorder_.add({JsonEvent::START_ARRAY});
                matchArrayElements();
                requireAndStep(']');
                recorder_.add({JsonEvent::END_ARRAY});
                break;
            case 't':
                matchWord("true", "boolean value 'true' is expected, but was ");
                recorder_.add({JsonEvent::BOOLEAN, 1});
                break;
            case 'f':
                matchWord("false", "boolean value 'false' is expected, but was ");
                recorder_.add({JsonEvent::BOOLEAN, 0});
                break;
            case 'n':
                matchWord("null", "'null' is expected, buf was ");
                recorder_.add({JsonEvent::NULL_VALUE});
                break;
            default:
                matchNumber();
                break;
        }
    }

    void matchArrayElements() {
        int count = 0;
        for (;;) {
            skip();
            if (atEnd() || here() == ']') {
                return;
            }
            if (count > 0) {
                requireAndStep(',');
                skip();
                if (has(JSON_ALLOW_TRAILING_COMMA) && !atEnd() && here() == ']') {
                    return;
                }
            }
            ++count;
            matchOneJsonValue();
        }
    }

    void matchObjectFields() {
        int count = 0;
        for (;;) {
            skip();
            if (atEnd() || here() == '}') {
                return;
            }
            if (count > 0) {
                requireAndStep(',');
                skip();
                if (has(JSON_ALLOW_TRAILING_COMMA) && !atEnd() && here() == '}') {
                    return;
                }
            }
            ++count;
            matchName();
            skip();
            requireAndStep(':');
            skip();
            matchOneJsonValue();
        }
    }

    void matchName() {
        JsonEvent event = {JsonEvent::FIELD_NAME};
        if (!has(JSON_ALLOW_UNQUOTED_NAME) || !matchUnquotedName(&event.text)) {
            requireAndStep('"');
            event.text = readStringValue();
            requireAndStep('"');
        }
        recorder_.add(event);
    }

    bool matchUnquotedName(std::string * name) {
        std::size_t const end = std::min(input_.find(':', position_), input_.size());
        std::string_view const candidate = input_.substr(position_, end - position_);
        if (candidate.find_first_of("\"\\[{,") != std::string_view::npos) {
            return false;
        }
        *name = candidate;
        position_ = end;
        return true;
    }

    // Scalars.

    void matchWord(std::string_view word, char const * complaint) {
        // One more byte must stand behind the word.
        if (position_ + word.size() >= input_.size() ||
            input_.substr(position_, word.size()) != word) {
            fail(position_, complaint + excerpt(position_, SHORT_EXCERPT) + "...");
        }
        position_ += word.size();
    }

    void matchString() {
        JsonEvent event = {JsonEvent::STRING};
        ++position_;
        event.text = readStringValue();
        event.hash = hashOf(event.text);
        requireAndStep('"');
        recorder_.add(event);
    }

    void matchNumber() {
        JsonEvent event = {JsonEvent::NUMBER};
        std::size_t const start = position_;
        if (here() == '-') {
            ++position_;
            if (atEnd()) {
                fail(start, "invalid number value(end of data encountered)");
            }
        }
        if (here() == '0') {
            if (isDigitAt(position_ + 1)) {
                fail(position_, "invalid number value with leading zero. data=" +
                                    excerpt(position_, SHORT_EXCERPT) + "...");
            }
            ++position_;
        } else if (isDigitAt(position_)) {
            stepOverDigits();
        } else {
            fail(position_,
                 "invalid number value, data=" + excerpt(position_, SHORT_EXCERPT) + "...");
        }
        if (position_ + 2 < input_.size() && here() == '.' && isDigitAt(position_ + 1)) {
            event.fractionStart = static_cast<long long>(position_);
            ++position_;
            stepOverDigits();
        }
        if (position_ + 1 < input_.size() && (here() == 'e' || here() == 'E')) {
            event.exponentStart = static_cast<long long>(position_);
            matchExponent();
        }
        event.text = input_.substr(start, position_ - start);
        event.hash = hashOf(event.text);
        event.start = static_cast<long long>(start);
        recorder_.add(event);
    }

    /// Stays before the `e` if its digits are missing or too near to the end.
    void matchExponent() {
        if (position_ + 2 >= input_.size()) {
            return;
        }
        char const next = input_[position_ + 1];
        if (next == '+' || next == '-') {
            if (position_ + 3 < input_.size() && isDigitAt(position_ + 2)) {
                position_ += 2;
                stepOverDigits();
            }
        } else if (isDigitAt(position_ + 1)) {
            ++position_;
            stepOverDigits();
        }
    }

    // Texts.

    /// Stays at the character that ends the text: a quote, a NUL, or the end of the data.
    std::string readStringValue() {
        std::string text;
        for (;;) {
            DecodedCharacter const character = referenceDecode(
                input_, static_cast<unsigned int>(position_), TrailBytes::TAKEN_AS_THEY_COME);
            if (!character.failure.empty()) {
                throw Failure{character.failure};
            }
            bool const isEndOfData = character.size == 0;
            if (isEndOfData || character.codePoint == 0 || character.codePoint == '"') {
                return text;
            }
            std::size_t const start = position_;
            position_ += character.size;
            if (character.codePoint == '\\') {
                text += readEscape(start);
            } else {
                text += input_.substr(start, character.size);
            }
        }
    }

    std::string readEscape(std::size_t backslash) {
        if (position_ + 1 >= input_.size()) {
            fail(backslash, "invalid escape sequence(end of data)");
        }
        char const escape = here();
        ++position_;
        switch (escape) {
            case '\\':
            case '/':
            case '"':
                return {escape};
            case 'n':
                return "\x0A";
            case 'r':
                return "\x0D";
            case 't':
                return "\x09";
            case 'f':
                return "\x0C";
            case 'b':
                return "\x08";
            case 'u':
                return readUnicodeEscape(backslash);
            default:
                fail(backslash, std::string("invalid escape sequence \\") + escape +
                                    ", data=" + excerpt(position_, SHORT_EXCERPT) + "...");
        }
    }

    std::string readUnicodeEscape(std::size_t backslash) {
        int codePoint = match4HexChar();
        if (codePoint >= 0xD800 && codePoint <= 0xDBFF) {
            requireAndStep('\\');
            requireAndStep('u');
            int const low = match4HexChar();
            if (low < 0xDC00 || low > 0xDFFF) {
                char values[64];
                std::snprintf(values, sizeof values, "(0x%x, 0x%x)",
                              static_cast<unsigned int>(codePoint), static_cast<unsigned int>(low));
                fail(backslash, std::string("invalid unicode code surrogate pair") + values +
                                    ", data=" + excerpt(backslash, SHORT_EXCERPT) + "...");
            }
            codePoint = 0x10000 + (codePoint - 0xD800) * 0x400 + (low - 0xDC00);
        }
        return referenceEncode(codePoint);
    }

    int match4HexChar() {
        // One more byte must stand behind the digits.
        if (position_ + 4 >= input_.size()) {
            fail(position_, "encountered end of data while a HEX character is expected");
        }
        int value = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            char const byte = input_[position_ + i];
            std::size_t const digit =
                std::string_view("0123456789abcdef0123456789ABCDEF").find(byte);
            if (digit == std::string_view::npos) {
                fail(position_ + i, std::string("a HEX character is expected, but was '") + byte +
                                        "', data=" + excerpt(position_, SHORT_EXCERPT) +
                                        (i < 3 ? "..." : ""));
            }
            value = value * 16 + static_cast<int>(digit % 16);
        }
        position_ += 4;
        return value;
    }

    // Space, tags and failures.

    void skip() {
        while (!atEnd()) {
            if (std::string_view("\b\t\n\f\r ").find(here()) != std::string_view::npos) {
                ++position_;
            } else if (isCommentHere()) {
                std::size_t const lineFeed = input_.find('\n', position_);
                position_ = lineFeed == std::string_view::npos ? input_.size() : lineFeed + 1;
            } else {
                return;
            }
        }
    }

    bool isCommentHere() const {
        std::string_view const rest = input_.substr(position_);
        return (has(JSON_ALLOW_HASH_COMMENT) && rest.starts_with('#')) ||
               (has(JSON_ALLOW_SLASH_COMMENT) && rest.starts_with("//"));
    }

    void require(char tag) const {
        if (atEnd() || here() != tag) {
            fail(position_, std::string("tag '") + tag + "' is expected, but was " +
                                excerpt(position_, LONG_EXCERPT) + "...");
        }
    }

    void requireAndStep(char tag) {
        require(tag);
        ++position_;
    }

    void stepOverDigits() {
        while (isDigitAt(position_)) {
            ++position_;
        }
    }

    bool isDigitAt(std::size_t position) const {
        return position < input_.size() && input_[position] >= '0' && input_[position] <= '9';
    }

    /// The input from a position on in angle brackets, up to the limit or to a NUL.
    std::string excerpt(std::size_t position, std::size_t limit) const {
        std::string_view const piece = input_.substr(position, limit);
        return '<' + std::string(piece.substr(0, piece.find('\0'))) + '>';
    }

    [[noreturn]] static void fail(std::size_t position, std::string const & text) {
        std::string message = nearPosition(static_cast<unsigned int>(position)) + ": " + text;
        // Messages are texts that a NUL ends: one that is quoted as a character cuts the rest off.
        message.resize(std::strlen(message.c_str()));
        throw Failure{message};
    }

    bool atEnd() const { return position_ >= input_.size(); }
    char here() const { return input_[position_]; }
    bool has(int option) const { return (options_ & option) != 0; }

    static constexpr std::size_t LONG_EXCERPT = 256;
    static constexpr std::size_t SHORT_EXCERPT = 128;

    std::string_view input_;
    int options_;
    std::size_t position_ = 0;
    EventRecorder recorder_;
};

}  // namespace tvk::test
