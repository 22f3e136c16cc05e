#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/UsingCodePage.h"
#include "tvk/platform/CodePage.h"

namespace tvk::test {

/// What the conversions of tvk/platform/CodePage.h have to give, computed slowly in two whole
/// steps with the UTF-16 text between them.
///
/// The characters of single codes are read off the library, one code at a time; other tests compare
/// those with the system's converter. Everything else is the model's own: what a sequence is, where
/// it ends, what is composed, what is replaced, and which of several codes is written.
class CodePageModel {
public:
    explicit CodePageModel(unsigned int codePage) : codePage_(codePage) {
        if (codePage_ != 65001) {
            readCodes();
            composeFrom(codePage_ == 932 ? compositions932() : compositionsOfLetters());
        }
    }

    unsigned int codePage() const { return codePage_; }

    std::string fromUtf8(std::string_view text) const {
        std::u16string const units = decodeUtf8(text);
        if (codePage_ == 65001) {
            return encodeUtf8(units);
        }
        std::string result;
        for (std::size_t i = 0; i < units.size(); ++i) {
            auto const composed = i + 1 < units.size()
                                      ? compositions_.find({units[i], units[i + 1]})
                                      : compositions_.end();
            if (composed != compositions_.end()) {
                result += codeOf(composed->second);
                ++i;
            } else {
                result += codeOf(units[i]);
            }
        }
        return result;
    }

    std::string toUtf8(std::string_view text) const {
        return encodeUtf8(codePage_ == 65001 ? decodeUtf8(text) : decodeCodes(text));
    }

    /// The bytes that are written for a UTF-16 unit.
    std::string codeOf(char16_t unit) const {
        auto const found = codes_.find(unit);
        return found != codes_.end() ? found->second : codePage_ == 932 ? "\x81\x7C" : "\x81";
    }
    bool hasCode(char16_t unit) const { return codes_.count(unit) != 0; }

    using Compositions = std::map<std::pair<char16_t, char16_t>, char16_t>;
    Compositions const & compositions() const { return compositions_; }

    /// Every code of the code page that stands for a character.
    std::map<std::string, char16_t> const & characters() const { return characters_; }

    /// UTF-8 to UTF-16: the longest prefix of any well-formed sequence is one U+FFFD.
    static std::u16string decodeUtf8(std::string_view text) {
        std::u16string units;
        while (!text.empty()) {
            std::size_t longest = 1;
            bool isWhole = false;
            for (Shape const & shape : SHAPES) {
                std::size_t const matched = shape.matched(text);
                if (matched > 0 && matched >= longest) {
                    longest = matched;
                    isWhole = matched == shape.length;
                }
            }
            append(units, isWhole ? valueOf(text.substr(0, longest)) : U'\uFFFD');
            text.remove_prefix(longest);
        }
        return units;
    }

    /// UTF-16 to UTF-8; a lone surrogate gives U+FFFD.
    static std::string encodeUtf8(std::u16string_view units) {
        std::string text;
        for (std::size_t i = 0; i < units.size(); ++i) {
            char32_t const unit = units[i];
            bool const isPair = unit >= 0xD800 && unit < 0xDC00 && i + 1 < units.size() &&
                                units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000;
            if (isPair) {
                ++i;
                put(text, 0x10000 + ((unit - 0xD800) << 10) + (units[i] - 0xDC00U));
            } else {
                put(text, unit >= 0xD800 && unit < 0xE000 ? U'\uFFFD' : unit);
            }
        }
        return text;
    }

private:
    struct Range {
        unsigned int first;
        unsigned int last;
    };
    struct Shape {
        std::size_t length;
        std::array<Range, 4> bytes;

        std::size_t matched(std::string_view text) const {
            std::size_t count = 0;
            while (count < length && count < text.size() &&
                   byteAt(text, count) >= bytes[count].first &&
                   byteAt(text, count) <= bytes[count].last) {
                ++count;
            }
            return count;
        }
    };
    static constexpr std::array<Shape, 9> SHAPES = {{
        {1, {{{0x00, 0x7F}}}},
        {2, {{{0xC2, 0xDF}, {0x80, 0xBF}}}},
        {3, {{{0xE0, 0xE0}, {0xA0, 0xBF}, {0x80, 0xBF}}}},
        {3, {{{0xE1, 0xEC}, {0x80, 0xBF}, {0x80, 0xBF}}}},
        {3, {{{0xED, 0xED}, {0x80, 0x9F}, {0x80, 0xBF}}}},
        {3, {{{0xEE, 0xEF}, {0x80, 0xBF}, {0x80, 0xBF}}}},
        {4, {{{0xF0, 0xF0}, {0x90, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}}},
        {4, {{{0xF1, 0xF3}, {0x80, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}}},
        {4, {{{0xF4, 0xF4}, {0x80, 0x8F}, {0x80, 0xBF}, {0x80, 0xBF}}}},
    }};

    static unsigned int byteAt(std::string_view text, std::size_t at) {
        return static_cast<unsigned char>(text[at]);
    }

    static char32_t valueOf(std::string_view sequence) {
        static constexpr unsigned int LEAD_BITS[] = {0x7F, 0x1F, 0x0F, 0x07};
        char32_t value = byteAt(sequence, 0) & LEAD_BITS[sequence.size() - 1];
        for (std::size_t i = 1; i < sequence.size(); ++i) {
            value = value * 64 + (byteAt(sequence, i) - 0x80);
        }
        return value;
    }

    static void append(std::u16string & units, char32_t character) {
        if (character >= 0x10000) {
            units += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
            units += static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
        } else {
            units += static_cast<char16_t>(character);
        }
    }

    static void put(std::string & text, char32_t character) {
        int const trailBytes = character < 0x80      ? 0
                               : character < 0x800   ? 1
                               : character < 0x10000 ? 2
                                                     : 3;
        static constexpr unsigned int LEAD_MARKS[] = {0x00, 0xC0, 0xE0, 0xF0};
        text += static_cast<char>(LEAD_MARKS[trailBytes] | character >> (6 * trailBytes));
        for (int i = trailBytes - 1; i >= 0; --i) {
            text += static_cast<char>(0x80 | (character >> (6 * i) & 0x3F));
        }
    }

    static bool isLead932(unsigned int byte) {
        return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
    }

    static bool isReadButNeverWritten(unsigned int code) {
        static constexpr Range RANGES[] = {{0x8790, 0x8792}, {0x8795, 0x8797}, {0x879A, 0x879C},
                                           {0xED40, 0xEEFC}, {0xFA4A, 0xFA54}, {0xFA58, 0xFA5B}};
        for (Range const & range : RANGES) {
            if (code >= range.first && code <= range.last) {
                return true;
            }
        }
        return false;
    }

    void readCodes() {
        UsingCodePage const use(codePage_);
        for (unsigned int first = 0; first < 0x100; ++first) {
            if (codePage_ != 932 || !isLead932(first)) {
                readCode(std::string(1, static_cast<char>(first)), first);
                continue;
            }
            for (unsigned int second = 1; second < 0x100; ++second) {
                readCode({static_cast<char>(first), static_cast<char>(second)},
                         first << 8 | second);
            }
        }
    }

    void readCode(std::string const & code, unsigned int number) {
        CString const text =
            platform::ansiToUtf8(code.data(), static_cast<unsigned int>(code.size()));
        std::u16string const units = decodeUtf8(
            std::string_view(text.GetString(), static_cast<std::size_t>(text.GetLength())));
        bool const isUndefined = units == u"\u30FB" && number != 0x8145;
        if (units.size() != 1 || isUndefined) {
            return;
        }
        characters_[code] = units[0];
        if (codePage_ != 932 || !isReadButNeverWritten(number)) {
            codes_[units[0]] = code;
        }
    }

    void composeFrom(Compositions const & compositions) {
        for (auto const & [pair, composed] : compositions) {
            if (hasCode(composed)) {
                compositions_[pair] = composed;
            }
        }
    }

    /// The kana with a voiced form right behind them, those with a half-voiced one, four letters
    /// and a sign.
    static Compositions compositions932() {
        Compositions pairs = {
            {{u'\u0415', u'\u0308'}, u'\u0401'}, {{u'\u0435', u'\u0308'}, u'\u0451'},
            {{u'\u0418', u'\u0306'}, u'\u0419'}, {{u'\u0438', u'\u0306'}, u'\u0439'},
            {{u'=', u'\u0338'}, u'\u2260'},      {{u'\u30A6', u'\u3099'}, u'\u30F4'},
            {{u'\u309D', u'\u3099'}, u'\u309E'}, {{u'\u30FD', u'\u3099'}, u'\u30FE'}};
        for (char16_t const kana : {u'\u3040', u'\u30A0'}) {  // hiragana, katakana: the same places
            for (int const place : {0x0B, 0x0D, 0x0F, 0x11, 0x13, 0x15, 0x17, 0x19, 0x1B, 0x1D,
                                    0x1F, 0x21, 0x24, 0x26, 0x28, 0x2F, 0x32, 0x35, 0x38, 0x3B}) {
                auto const base = static_cast<char16_t>(kana + place);
                pairs[{base, u'\u3099'}] = static_cast<char16_t>(base + 1);
                if (place >= 0x2F) {
                    pairs[{base, u'\u309A'}] = static_cast<char16_t>(base + 2);
                }
            }
        }
        return pairs;
    }

    static Compositions compositionsOfLetters() {
        struct Row {
            char16_t mark;
            std::u16string_view bases;
            std::u16string_view composed;
        };
        static constexpr Row ROWS[] = {
            {0x0300, u"AEIOUaeiou",
             u"\u00C0\u00C8\u00CC\u00D2\u00D9\u00E0\u00E8\u00EC\u00F2\u00F9"},
            {0x0301, u"AEIOUYaeiouy",
             u"\u00C1\u00C9\u00CD\u00D3\u00DA\u00DD\u00E1\u00E9\u00ED\u00F3\u00FA\u00FD"},
            {0x0302, u"AEIOUaeiou",
             u"\u00C2\u00CA\u00CE\u00D4\u00DB\u00E2\u00EA\u00EE\u00F4\u00FB"},
            {0x0303, u"ANOano", u"\u00C3\u00D1\u00D5\u00E3\u00F1\u00F5"},
            {0x0308, u"AEIOUYaeiouy",
             u"\u00C4\u00CB\u00CF\u00D6\u00DC\u0178\u00E4\u00EB\u00EF\u00F6\u00FC\u00FF"},
            {0x030A, u"Aa", u"\u00C5\u00E5"},
            {0x030C, u"SZsz", u"\u0160\u017D\u0161\u017E"},
            {0x0327, u"Cc", u"\u00C7\u00E7"},
        };
        Compositions pairs;
        for (Row const & row : ROWS) {
            for (std::size_t i = 0; i < row.bases.size(); ++i) {
                pairs[{row.bases[i], row.mark}] = row.composed[i];
            }
        }
        return pairs;
    }

    std::u16string decodeCodes(std::string_view text) const {
        std::u16string units;
        while (!text.empty()) {
            bool const isLead = codePage_ == 932 && isLead932(byteAt(text, 0));
            bool const takesTrail = isLead && text.size() > 1 && text[1] != '\0';
            std::string const code(text.substr(0, takesTrail ? 2 : 1));
            auto const found = characters_.find(code);
            units += found == characters_.end() ? u'\u30FB' : found->second;
            text.remove_prefix(code.size());
        }
        return units;
    }

    unsigned int codePage_;
    std::map<std::string, char16_t> characters_;
    std::map<char16_t, std::string> codes_;
    Compositions compositions_;
};

}  // namespace tvk::test
