#include <algorithm>
#include <cstddef>
#include <cstring>

#include "tvk/json/JsonUtil.h"
#include "tvk/json/detail/JsonEscapes.h"
#include "tvk/json/detail/PlainText.h"
#include "tvk/text/detail/Utf8Codec.h"

namespace tvk {

namespace {

using Utf8 = detail::Utf8Codec<JsonUtil::XParsingError>;

/// One text on its way into a JSON string. Two loops take it there: a fast one while the room has
/// place for any character, and a careful one from there on.
class StringWriter {
public:
    StringWriter(char const * text, unsigned int length, char * output, unsigned int room,
                 int options)
        : text_(text),
          length_(length),
          output_(output),
          room_(room),
          escapesSlash_((options & JSON_ESCAPE_SLASH) != 0) {}

    void write() {
        if (writeFast()) {
            writeCarefully();
        }
    }

    unsigned int consumed() const { return in_; }
    unsigned int written() const { return static_cast<unsigned int>(out_); }

private:
    /// The longest sequence, which is what the fast loop keeps free behind a character.
    static constexpr std::size_t LONGEST = 6;

    /// False when a NUL has ended the text.
    bool writeFast() {
        detail::PlainAscii const plain(escapesSlash_);
        while (in_ < length_ && out_ + LONGEST < room_) {
            // As many bytes as could be taken one by one without running out of room.
            std::size_t const most = std::min<std::size_t>(length_ - in_, room_ - LONGEST - out_);
            std::size_t const copied = plain.copy(text_ + in_, most, output_ + out_);
            in_ += static_cast<unsigned int>(copied);
            out_ += copied;
            if (copied == most) {
                continue;
            }
            if (!writeCharacter(nextUntested())) {
                return false;
            }
        }
        return true;
    }

    void writeCarefully() {
        while (in_ < length_) {
            Utf8::Sequence const character = Utf8::checked(text_, length_, in_);
            char const escape = detail::escapeOf(character.codePoint);
            // Deliberate: the line feed and the plain slash are not measured; stored results were
            // cut behind them, not before. Callers who give twice the length never come here short.
            bool const isMeasured = escape != 'n' && (escape != '/' || escapesSlash_);
            if (isMeasured && out_ + (escape != 0 ? 2 : character.size) >= room_) {
                return;
            }
            if (!writeCharacter(character)) {
                return;
            }
        }
    }

    /// The character here, its trail bytes untested.
    Utf8::Sequence nextUntested() const {
        unsigned int const size = Utf8::sequenceSize(static_cast<unsigned char>(text_[in_]));
        if (size == 0) {
            Utf8::failUndecided(in_);
        }
        if (size > length_ - in_) {
            Utf8::failCut(in_, size);
        }
        return Utf8::trusted(text_, length_, in_);
    }

    /// False for NUL, which ends the text.
    bool writeCharacter(Utf8::Sequence character) {
        if (character.codePoint == 0) {
            return false;
        }
        if (char const escape = detail::escapeOf(character.codePoint); escape != 0) {
            writeEscape(escape);
        } else {
            writeSequence(character.size);
        }
        return true;
    }

    /// Deliberate: one byte of input, even where an overlong form took more; what is left of that
    /// form is then refused as a lead byte.
    void writeEscape(char escape) {
        if (escape != '/' || escapesSlash_) {
            output_[out_++] = '\\';
        }
        output_[out_++] = escape;
        ++in_;
    }

    void writeSequence(unsigned int bytes) {
        std::memcpy(output_ + out_, text_ + in_, bytes);
        out_ += bytes;
        in_ += bytes;
    }

    char const * text_;
    unsigned int length_;
    unsigned int in_ = 0;
    char * output_;
    std::size_t room_;
    std::size_t out_ = 0;
    bool escapesSlash_;
};

}  // namespace

unsigned int JsonUtil::writeUnquotedJsonStringValue(char const * text, unsigned int length,
                                                    char * output, unsigned int outputSize,
                                                    unsigned int * written, int options) {
    StringWriter writer(text, length, output, outputSize, options);
    writer.write();
    if (written != nullptr) {
        *written = writer.written();
    }
    return writer.consumed();
}

}  // namespace tvk
