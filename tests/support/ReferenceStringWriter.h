#pragma once

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

#include "tests/support/ExactBuffer.h"
#include "tests/support/ReferenceUtf8.h"
#include "tvk/json/JsonUtil.h"

namespace tvk::test {

/// What writing a text into a room gave.
struct WrittenString {
    std::string output;
    unsigned int consumed = 0;
    std::string error;           // empty when nothing was thrown
    std::size_t strayBytes = 0;  // changed behind the room and behind what was written

    bool operator==(WrittenString const &) const = default;
};

inline std::ostream & operator<<(std::ostream & stream, WrittenString const & written) {
    return stream << '<' << written.output << "> from " << written.consumed << " bytes, "
                  << written.error << ' ' << written.strayBytes << " stray";
}

/// JsonUtil::writeUnquotedJsonStringValue into a block that ends where its contract says.
inline WrittenString writeWithLibrary(std::string_view text, unsigned int outputSize, int options) {
    constexpr char GUARD = '\x5A';
    ExactBuffer const input(text);
    std::size_t const held = std::max<std::size_t>(outputSize, 2 * text.size());
    ExactBuffer output(std::string(held, GUARD));
    unsigned int size = 0;
    WrittenString written;
    try {
        written.consumed = JsonUtil::writeUnquotedJsonStringValue(
            input, input.length(), output.data(), outputSize, &size, options);
        written.output.assign(output.data(), size);
        std::size_t const used = std::max<std::size_t>(outputSize, size);
        written.strayBytes =
            held - used -
            static_cast<std::size_t>(std::count(output.data() + used, output.data() + held, GUARD));
    } catch (JsonUtil::XParsingError const & error) {
        written.error = error.getErrorMessage();
    }
    return written;
}

/// The two loops of the writer again, one character at a time.
class ReferenceStringWriter {
public:
    ReferenceStringWriter(std::string_view text, std::size_t room, int options)
        : text_(text), room_(room), escapesSlash_((options & JSON_ESCAPE_SLASH) != 0) {}

    WrittenString run() {
        try {
            while (out_.size() + 6 < room_ && in_ < text_.size()) {
                if (!take(decode(TrailBytes::TAKEN_AS_THEY_COME), true)) {
                    return result();
                }
            }
            while (in_ < text_.size()) {
                if (!take(decode(TrailBytes::TESTED), false)) {
                    return result();
                }
            }
            return result();
        } catch (std::string const & error) {
            WrittenString outcome;
            outcome.error = error;
            return outcome;
        }
    }

private:
    WrittenString result() const {
        WrittenString outcome;
        outcome.output = out_;
        outcome.consumed = static_cast<unsigned int>(in_);
        return outcome;
    }

    DecodedCharacter decode(TrailBytes trails) const {
        DecodedCharacter const character =
            referenceDecode(text_, static_cast<unsigned int>(in_), trails);
        if (!character.failure.empty()) {
            throw character.failure;
        }
        return character;
    }

    /// False when the writing ends.
    bool take(DecodedCharacter const & character, bool hasRoom) {
        auto const fits = [&](std::size_t bytes) { return hasRoom || out_.size() + bytes < room_; };
        auto const escape = [&](char letter, bool isMeasured) {
            if (isMeasured && !fits(2)) {
                return false;
            }
            out_ += '\\';
            out_ += letter;
            in_ += 1;
            return true;
        };
        switch (character.codePoint) {
            case 0:
                return false;
            case 0x22:
                return escape('"', true);
            case 0x5C:
                return escape('\\', true);
            case 0x0A:
                return escape('n', false);
            case 0x0D:
                return escape('r', true);
            case 0x09:
                return escape('t', true);
            case 0x0C:
                return escape('f', true);
            case 0x08:
                return escape('b', true);
            case 0x2F:
                if (escapesSlash_) {
                    return escape('/', true);
                }
                out_ += '/';
                in_ += 1;
                return true;
            default:
                if (!fits(character.size)) {
                    return false;
                }
                out_ += text_.substr(in_, character.size);
                in_ += character.size;
                return true;
        }
    }

    std::string_view text_;
    std::size_t room_;
    bool escapesSlash_;
    std::size_t in_ = 0;
    std::string out_;
};

}  // namespace tvk::test
