#include "examples/support/Printable.h"

#include "tvk/platform/CodePage.h"

namespace {

unsigned char byteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

bool isTrail(unsigned char byte) { return (byte & 0xC0) == 0x80; }

std::size_t lengthByLead(unsigned char lead) {
    if (lead < 0x80) {
        return 1;
    }
    if (lead >= 0xC2 && lead < 0xE0) {
        return 2;
    }
    if (lead >= 0xE0 && lead < 0xF0) {
        return 3;
    }
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

/// The bytes of the character at the start of the text; 0 if there is none that can be shown.
std::size_t shownLength(std::string_view text) {
    unsigned char const lead = byteAt(text, 0);
    std::size_t const length = lengthByLead(lead);
    bool const isControl =
        lead < 0x20 || lead == 0x7F || (lead == 0xC2 && text.size() > 1 && byteAt(text, 1) < 0xA0);
    if (isControl || length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (!isTrail(byteAt(text, i))) {
            return 0;
        }
    }
    return length;
}

void appendEscaped(std::string & out, unsigned char byte) {
    constexpr char DIGITS[] = "0123456789ABCDEF";
    out += "\\x";
    out += DIGITS[byte >> 4];
    out += DIGITS[byte & 15];
}

}  // namespace

std::string printable(std::string_view text, std::size_t limit) {
    std::string out;
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t const shown = shownLength(text.substr(at));
        std::size_t const step = shown == 0 ? 1 : shown;
        if (at + step > limit) {
            return out + "...";
        }
        if (shown == 0) {
            appendEscaped(out, byteAt(text, at));
        } else {
            out += text.substr(at, shown);
        }
        at += step;
    }
    return out;
}

std::string printableAnsi(CString const & text, std::size_t limit) {
    auto const size = static_cast<unsigned int>(text.GetLength());
    CString const utf8 = tvk::platform::ansiToUtf8(text.GetString(), size);
    return printable(bytesOf(utf8), limit);
}

std::string_view bytesOf(CString const & text) {
    return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}
