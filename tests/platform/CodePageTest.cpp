#include "tvk/platform/CodePage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/CodePageModel.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/UsingCodePage.h"

namespace {

using tvk::platform::ansiCodePage;
using tvk::platform::setAnsiCodePage;
using tvk::test::AllocationCounter;
using tvk::test::CodePageModel;
using tvk::test::ExactBuffer;
using tvk::test::UsingCodePage;

constexpr unsigned int CODE_PAGES[] = {932, 1252, 28591, 65001};

// The two forms of a conversion, on blocks that end where text and room end.
using RawForm = std::size_t (*)(void const *, std::size_t, char *);
using TextForm = CString (*)(void const *, unsigned int);

std::string convert(std::string const & text, RawForm raw, TextForm whole, std::size_t roomOfByte) {
    ExactBuffer const input(text);
    ExactBuffer output(std::string(text.size() * roomOfByte, '\0'));
    std::size_t const size = raw(input.data(), input.size(), output.data());
    EXPECT_LE(size, output.size());
    std::string const result(output.data(), size);
    CString const same = whole(input.data(), input.length());
    EXPECT_EQ(std::string(same, static_cast<std::size_t>(same.GetLength())), result);
    return result;
}

std::string toAnsi(std::string const & text) {
    return convert(text, tvk::platform::utf8ToAnsi, tvk::platform::utf8ToAnsi,
                   tvk::platform::UTF8_TO_ANSI_ROOM);
}

std::string toUtf8(std::string const & text) {
    return convert(text, tvk::platform::ansiToUtf8, tvk::platform::ansiToUtf8,
                   tvk::platform::ANSI_TO_UTF8_ROOM);
}

std::string utf8Of(std::u16string_view units) { return CodePageModel::encodeUtf8(units); }
std::string utf8Of(char16_t unit) { return utf8Of(std::u16string_view(&unit, 1)); }

std::string repeated(std::string_view text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

std::string bracketed(std::string_view text) {
    std::string result("<");
    return result.append(text).append(">");
}

std::u16string nulBehind(std::u16string_view text) {
    std::u16string result(text);
    result.push_back(u'\0');
    return result;
}

bool isSurrogate(unsigned int unit) { return unit >= 0xD800 && unit < 0xE000; }

// What stands in a literal with bytes of zero in it.
template <std::size_t SIZE>
std::string bytes(char const (&literal)[SIZE]) {
    return std::string(literal, SIZE - 1);
}

TEST(CodePageSetting, Is932AtFirst) { EXPECT_EQ(ansiCodePage(), 932U); }

TEST(CodePageSetting, TakesTheFourKnownNumbers) {
    UsingCodePage const restore(932);
    for (unsigned int const codePage : CODE_PAGES) {
        EXPECT_TRUE(setAnsiCodePage(codePage));
        EXPECT_EQ(ansiCodePage(), codePage);
    }
}

TEST(CodePageSetting, RefusesEveryOtherNumberAndKeepsTheOld) {
    UsingCodePage const use(1252);
    for (unsigned int const codePage :
         {0U, 1U, 437U, 931U, 933U, 936U, 1251U, 1253U, 20932U, 28592U, 65000U, 65002U,
          std::numeric_limits<unsigned int>::max()}) {
        EXPECT_FALSE(setAnsiCodePage(codePage)) << codePage;
        EXPECT_EQ(ansiCodePage(), 1252U);
    }
}

struct WrittenRow {
    char const * name;
    std::u16string_view text;
    std::string_view code;
};

constexpr std::string_view DEFAULT = "\x81\x7C";
constexpr std::string_view TWO_DEFAULTS = "\x81\x7C\x81\x7C";

constexpr WrittenRow WRITTEN_932[] = {
    {"backslash stays", u"\\", "\\"},
    {"tilde stays", u"~", "~"},
    {"delete stays", u"\u007F", "\x7F"},
    {"control 80", u"\u0080", "\x80"},
    {"other controls", u"\u0081", DEFAULT},
    {"first half-width form", u"\uFF61", "\xA1"},
    {"last half-width form", u"\uFF9F", "\xDF"},
    {"kanji", u"\u6F22", "\x8A\xBF"},
    {"kanji with a trail byte of 5C", u"\u8868", "\x95\x5C"},
    {"minus sign", u"\u2212", DEFAULT},
    {"full-width hyphen-minus", u"\uFF0D", "\x81\x7C"},
    {"wave dash", u"\u301C", DEFAULT},
    {"full-width tilde", u"\uFF5E", "\x81\x60"},
    {"double vertical line", u"\u2016", DEFAULT},
    {"parallel to", u"\u2225", "\x81\x61"},
    {"em dash", u"\u2014", DEFAULT},
    {"horizontal bar", u"\u2015", "\x81\x5C"},
    {"yen sign", u"\u00A5", DEFAULT},
    {"full-width yen sign", u"\uFFE5", "\x81\x8F"},
    {"overline", u"\u203E", DEFAULT},
    {"full-width macron", u"\uFFE3", "\x81\x50"},
    {"cent sign", u"\u00A2", DEFAULT},
    {"pound sign", u"\u00A3", DEFAULT},
    {"not sign", u"\u00AC", DEFAULT},
    {"broken bar", u"\u00A6", DEFAULT},
    {"full-width cent sign", u"\uFFE0", "\x81\x91"},
    {"full-width pound sign", u"\uFFE1", "\x81\x92"},
    {"full-width not sign", u"\uFFE2", "\x81\xCA"},
    {"full-width broken bar", u"\uFFE4", "\xFA\x55"},
    {"no best fit: e acute", u"\u00E9", DEFAULT},
    {"no best fit: copyright", u"\u00A9", DEFAULT},
    {"no best fit: registered", u"\u00AE", DEFAULT},
    {"no best fit: micro", u"\u00B5", DEFAULT},
    {"no best fit: middle dot", u"\u00B7", DEFAULT},
    {"no best fit: hiragana vu", u"\u3094", DEFAULT},
    {"euro sign", u"\u20AC", DEFAULT},
    {"replacement character", u"\uFFFD", DEFAULT},
    {"byte order mark", u"\uFEFF", DEFAULT},
    {"line separator", u"\u2028", DEFAULT},
    {"no-break space", u"\u00A0", DEFAULT},
    {"noncharacters", u"\uFFFE\uFFFF", TWO_DEFAULTS},
    {"a pair, one default a unit", u"\U0001F600", TWO_DEFAULTS},
    {"the last pair", u"\U0010FFFF", TWO_DEFAULTS},
    {"composed ga", u"\u304B\u3099", "\x82\xAA"},
    {"composed pa", u"\u30CF\u309A", "\x83\x70"},
    {"voiced mark alone", u"\u3099", DEFAULT},
    {"parts without a composed form", u"e\u0301", "e\x81\x7C"},
    {"a second mark stays", u"\u304B\u3099\u3099", "\x82\xAA\x81\x7C"},
    {"not equal", u"=\u0338", "\x81\x82"},
    {"a base, then a base with its mark", u"==\u0338", "=\x81\x82"},
    {"a mark behind ASCII that is no base", u"a\u0338", "a\x81\x7C"},
    {"a mark behind a character that is no base", u"\u3042\u3099", "\x82\xA0\x81\x7C"},
    {"a mark behind a character without a place", u"\u00E9\u3099", TWO_DEFAULTS},
    {"the wrong mark", u"\u304B\u309A", "\x82\xA9\x81\x7C"},
    {"a half-width base", u"\uFF76\u3099", "\xB6\x81\x7C"},
    {"a half-width mark is a character", u"\uFF76\uFF9E", "\xB6\xDE"},
    {"first of private use", u"\uE000", "\xF0\x40"},
    {"last of private use", u"\uE757", "\xF9\xFC"},
    {"private use beyond", u"\uE758", DEFAULT},
    {"four single bytes", u"\uF8F0\uF8F1\uF8F2\uF8F3", "\xA0\xFD\xFE\xFF"},
    {"row 13: circled one", u"\u2460", "\x87\x40"},
    {"row 13: roman one", u"\u2160", "\x87\x54"},
    {"row 13: parenthesized stock", u"\u3231", "\x87\x8A"},
    {"row 13: numero", u"\u2116", "\x87\x82"},
    {"row 13: telephone", u"\u2121", "\x87\x84"},
    {"row 2, not row 13", u"\u2252\u2261\u222B\u221A\u22A5\u2220\u2235\u2229\u222A",
     "\x81\xE0\x81\xDF\x81\xE7\x81\xE3\x81\xDB\x81\xDA\x81\xE6\x81\xBF\x81\xBE"},
    {"small roman one", u"\u2170", "\xFA\x40"},
    {"third extension", u"\uFA0E\u7E8A\u9ADC", "\xFA\x90\xFA\x5C\xFC\x40"},
};

TEST(CodePage932, WritesTheStatedCodes) {
    UsingCodePage const use(932);
    for (WrittenRow const & row : WRITTEN_932) {
        EXPECT_EQ(toAnsi(utf8Of(row.text)), row.code) << row.name;
        EXPECT_EQ(toAnsi(bracketed(utf8Of(row.text))), bracketed(row.code)) << row.name;
    }
    EXPECT_EQ(toAnsi(bytes("\0")), bytes("\0"));
}

TEST(CodePage932, DeliberateMinusSignIsTheDefaultCodeByChance) {
    UsingCodePage const use(932);
    EXPECT_EQ(toAnsi(utf8Of(u'\u2212')), toAnsi(utf8Of(u'\uFF0D')));
    EXPECT_EQ(toUtf8(toAnsi(utf8Of(u'\u2212'))), utf8Of(u'\uFF0D'));
}

TEST(CodePage932, ComposesAcrossNothing) {
    UsingCodePage const use(932);
    // Pieces of sequences that would be a base if their bytes were looked at alone.
    EXPECT_EQ(toAnsi("\xC0\xBD\xCC\xB8"), repeated(DEFAULT, 3));              // overlong '='
    EXPECT_EQ(toAnsi("\xE0\x80\xBD\xCC\xB8"), repeated(DEFAULT, 4));          // the same
    EXPECT_EQ(toAnsi("\xF0\x83\x81\x8B\xE3\x82\x99"), repeated(DEFAULT, 5));  // overlong ka
    EXPECT_EQ(toAnsi("\x8B\xE3\x82\x99"), TWO_DEFAULTS);
    EXPECT_EQ(toAnsi("\xE3\x81\xE3\x82\x99"), TWO_DEFAULTS);
    EXPECT_EQ(toAnsi("\xE3\x82\x99\xE3\x81\x8B"), std::string(DEFAULT) + "\x82\xA9");
}

struct ReadRow {
    char const * name;
    std::string code;
    std::u16string text;
};

TEST(CodePage932, ReadsTheStatedCodes) {
    UsingCodePage const use(932);
    ReadRow const rows[] = {
        {"control 80", "\x80", u"\u0080"},
        {"single bytes of private use", "\xA0\xFD\xFE\xFF", u"\uF8F0\uF8F1\uF8F2\uF8F3"},
        {"half-width forms", "\xA1\xDF", u"\uFF61\uFF9F"},
        {"backslash", "\\", u"\\"},
        {"hyphen-minus, not minus", "\x81\x7C", u"\uFF0D"},
        {"tilde, not wave dash", "\x81\x60", u"\uFF5E"},
        {"parallel, not double line", "\x81\x61", u"\u2225"},
        {"private use", "\xF0\x40\xF9\xFC", u"\uE000\uE757"},
        {"second extension", "\xED\x40", u"\u7E8A"},
        {"third extension", "\xFA\x40", u"\u2170"},
        {"both places of one sign", "\x87\x90\x81\xE0", u"\u2252\u2252"},
        {"middle dot itself", "\x81\x45", u"\u30FB"},
        {"undefined pair", "\x85\x40", u"\u30FB"},
        {"undefined pair in a row that is in use", "\xFC\x4C", u"\u30FB"},
        {"lead byte at the end", "\x81", u"\u30FB"},
        {"lead byte at the end of a text", "\x8A\xBF\xE0", u"\u6F22\u30FB"},
        {"lead byte before NUL", bytes("\x81\0"), nulBehind(u"\u30FB")},
        {"lead byte before NUL and more", bytes("\x81\0\x40"), nulBehind(u"\u30FB") + u'@'},
        {"wrong trail 7F", "\x81\x7F", u"\u30FB"},
        {"wrong trail FD", "\x81\xFD", u"\u30FB"},
        {"wrong trail FF", "\xFC\xFF", u"\u30FB"},
        {"two wrong pairs", "\x85\x81\x85\x81", u"\u30FB\u30FB"},
    };
    for (ReadRow const & row : rows) {
        EXPECT_EQ(toUtf8(row.code), utf8Of(row.text)) << row.name;
    }
}

TEST(CodePage932, DeliberateWrongTrailByteGoesWithItsLeadByte) {
    UsingCodePage const use(932);
    EXPECT_EQ(toUtf8("\x81\x20"), utf8Of(u'\u30FB'));
    EXPECT_EQ(toUtf8("\x81\"x"), utf8Of(u"\u30FBx"));
    EXPECT_EQ(toUtf8("\x81\x0A\x81\x3F."), utf8Of(u"\u30FB\u30FB."));
}

TEST(CodePage932, ReadsWhatItWrites) {
    CodePageModel const model(932);
    UsingCodePage const use(932);
    int places = 0;
    for (unsigned int number = 0; number < 0x10000; ++number) {
        auto const unit = static_cast<char16_t>(number);
        if (isSurrogate(number)) {
            continue;
        }
        std::string const text = utf8Of(unit);
        std::string const code = toAnsi(text);
        if (toUtf8(code) == text) {
            ++places;
            EXPECT_TRUE(model.hasCode(unit)) << number;
        } else {
            EXPECT_EQ(code, DEFAULT) << number;
        }
    }
    EXPECT_EQ(places, 9402);
    EXPECT_EQ(model.characters().size(), 9800U);  // 398 are read and never written
}

TEST(CodePage932, ComposesExactlyTheStatedPairs) {
    CodePageModel const model(932);
    UsingCodePage const use(932);
    ASSERT_EQ(model.compositions().size(), 58U);
    std::vector<char16_t> marks = {u'\u3099', u'\u309A'};
    for (char16_t mark = 0x0300; mark <= 0x036F; ++mark) {
        marks.push_back(mark);
    }
    for (char16_t mark = 0x20D0; mark <= 0x20FF; ++mark) {
        marks.push_back(mark);
    }
    int composed = 0;
    for (unsigned int number = 0; number < 0x10000; ++number) {
        auto const base = static_cast<char16_t>(number);
        if (!model.hasCode(base)) {
            continue;
        }
        std::string const text = utf8Of(base);
        std::string const parts = model.codeOf(base) + std::string(DEFAULT);
        for (char16_t const mark : marks) {
            std::string const pair = text + utf8Of(mark);
            char output[6 * tvk::platform::UTF8_TO_ANSI_ROOM];
            std::size_t const size = tvk::platform::utf8ToAnsi(pair.data(), pair.size(), output);
            std::string_view const code(output, size);
            if (code == parts) {
                continue;
            }
            ++composed;
            auto const found = model.compositions().find({base, mark});
            ASSERT_NE(found, model.compositions().end()) << number << ' ' << unsigned{mark};
            EXPECT_EQ(code, model.codeOf(found->second));
        }
    }
    EXPECT_EQ(composed, 58);
}

struct RepairRow {
    char const * name;
    std::string text;
    std::u16string units;
};

std::vector<RepairRow> repairRows() {
    return {
        {"trail byte", "\x80", u"\uFFFD"},
        {"trail bytes", "\x80\x80", u"\uFFFD\uFFFD"},
        {"FE", "\xFE", u"\uFFFD"},
        {"FF", "\xFF", u"\uFFFD"},
        {"code page text", "\x82\xA0\x82\xA2\x82", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"overlong of two bytes", "\xC0\xA2", u"\uFFFD\uFFFD"},
        {"overlong NUL", "\xC0\x80", u"\uFFFD\uFFFD"},
        {"overlong lead bytes", bytes("\xC0\xC0\x80\0"), nulBehind(u"\uFFFD\uFFFD\uFFFD")},
        {"C1", "\xC1\xBF", u"\uFFFD\uFFFD"},
        {"five bytes", "\xF8\x80\xA0\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"six bytes", "\xFC\x80\x80\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"cut behind two of three", "\xE3\x81", u"\uFFFD"},
        {"cut behind one of three", "\xE3", u"\uFFFD"},
        {"cut behind three of four", "\xF0\x9F\x98", u"\uFFFD"},
        {"cut behind one of two", "\xC3", u"\uFFFD"},
        {"lead byte as trail", bytes("\xE0\xC0\0"), nulBehind(u"\uFFFD\uFFFD")},
        {"blank as trail", bytes("\xE0\x20\xC0\0"), nulBehind(u"\uFFFD \uFFFD")},
        {"low surrogate", "\xED\xB8\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"high surrogate", "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"pair of surrogates", "\xED\xA0\x80\xED\xB0\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"overlong of three bytes", "\xE0\x80\xA2", u"\uFFFD\uFFFD\uFFFD"},
        {"overlong of four bytes", "\xF0\x80\x80\xA2", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"beyond the last", "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"F5", "\xF5\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"ASCII behind a lead byte", "\xE3\x41", u"\uFFFDA"},
        {"ASCII behind two of four", "\xF0\x9F\x41", u"\uFFFDA"},
        {"first of each length", bytes("\0\xC2\x80\xE0\xA0\x80\xF0\x90\x80\x80"),
         nulBehind({}) + u"\u0080\u0800\U00010000"},
        {"last of each length", "\x7F\xDF\xBF\xEF\xBF\xBF\xF4\x8F\xBF\xBF",
         u"\u007F\u07FF\uFFFF\U0010FFFF"},
        {"around the surrogates", "\xED\x9F\xBF\xEE\x80\x80", u"\uD7FF\uE000"},
        {"byte order mark", "\xEF\xBB\xBF", u"\uFEFF"},
        {"noncharacter", "\xEF\xBF\xBE", u"\uFFFE"},
    };
}

TEST(CodePage65001, ReplacesBadSequencesAndNothingElse) {
    UsingCodePage const use(65001);
    for (RepairRow const & row : repairRows()) {
        EXPECT_EQ(toAnsi(row.text), utf8Of(row.units)) << row.name;
        EXPECT_EQ(toUtf8(row.text), utf8Of(row.units)) << row.name;
        EXPECT_EQ(toUtf8(bracketed(row.text)), bracketed(utf8Of(row.units))) << row.name;
    }
}

TEST(CodePage65001, ComposesNothing) {
    UsingCodePage const use(65001);
    std::string const parts = utf8Of(u"\u304B\u3099e\u0301=\u0338");
    EXPECT_EQ(toAnsi(parts), parts);
}

TEST(CodePage932, GivesEachBadSequenceTheDefaultCode) {
    CodePageModel const model(932);
    UsingCodePage const use(932);
    for (RepairRow const & row : repairRows()) {
        std::string expected;
        for (char16_t const unit : row.units) {
            expected += model.codeOf(unit);
        }
        EXPECT_EQ(toAnsi(row.text), expected) << row.name;
    }
}

constexpr std::u16string_view HIGH_HALF_1252 =
    u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u008D\u017D"
    u"\u008F\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u009D"
    u"\u017E\u0178";

TEST(CodePage1252, ReadsAndWritesEachByte) {
    UsingCodePage const use(1252);
    for (unsigned int byte = 0; byte < 0x100; ++byte) {
        char16_t const unit =
            byte >= 0x80 && byte < 0xA0 ? HIGH_HALF_1252[byte - 0x80] : static_cast<char16_t>(byte);
        std::string const code(1, static_cast<char>(byte));
        EXPECT_EQ(toUtf8(code), utf8Of(unit)) << byte;
        EXPECT_EQ(toAnsi(utf8Of(unit)), code) << byte;
    }
}

TEST(CodePage28591, ReadsAndWritesEachByteAsItsNumber) {
    UsingCodePage const use(28591);
    for (unsigned int byte = 0; byte < 0x100; ++byte) {
        std::string const code(1, static_cast<char>(byte));
        EXPECT_EQ(toUtf8(code), utf8Of(static_cast<char16_t>(byte))) << byte;
        EXPECT_EQ(toAnsi(utf8Of(static_cast<char16_t>(byte))), code) << byte;
    }
}

TEST(CodePageOfSingleBytes, GiveTheFirstDefaultByteForEachUnitWithoutAPlace) {
    for (unsigned int const codePage : {1252U, 28591U}) {
        SCOPED_TRACE(codePage);
        CodePageModel const model(codePage);
        UsingCodePage const use(codePage);
        EXPECT_EQ(model.characters().size(), 256U);
        EXPECT_EQ(toAnsi(utf8Of(u'\u2212')), "\x81");
        EXPECT_EQ(toAnsi(utf8Of(u"\u65E5\u672C")), "\x81\x81");
        EXPECT_EQ(toAnsi(utf8Of(u"\U0001F600")), "\x81\x81");
        EXPECT_EQ(toAnsi("\xE3\x81"), "\x81");
        for (unsigned int number = 0; number < 0x10000; ++number) {
            auto const unit = static_cast<char16_t>(number);
            if (!isSurrogate(number)) {
                EXPECT_EQ(toAnsi(utf8Of(unit)), model.codeOf(unit)) << number;
            }
        }
    }
}

TEST(CodePageOfSingleBytes, ComposeTheirLetters) {
    {
        UsingCodePage const use(1252);
        EXPECT_EQ(toAnsi(utf8Of(u"e\u0301Z\u030CY\u0308")), "\xE9\x8E\x9F");
    }
    {
        UsingCodePage const use(28591);
        EXPECT_EQ(toAnsi(utf8Of(u"e\u0301Z\u030CY\u0308")), "\xE9Z\x81Y\x81");
    }
    EXPECT_EQ(CodePageModel(1252).compositions().size(), 58U);
    EXPECT_EQ(CodePageModel(28591).compositions().size(), 53U);
}

TEST(CodePage, CopiesAsciiOfEveryLengthWithAnotherCharacterAtEveryPlace) {
    UsingCodePage const use(932);
    std::string const kanji = utf8Of(u'\u6F22');
    std::string ascii;
    for (int length = 0; length <= 40; ++length) {
        EXPECT_EQ(toAnsi(ascii), ascii);
        EXPECT_EQ(toUtf8(ascii), ascii);
        for (std::size_t at = 0; at <= ascii.size(); ++at) {
            std::string const text = ascii.substr(0, at) + kanji + ascii.substr(at);
            std::string const code = ascii.substr(0, at) + "\x8A\xBF" + ascii.substr(at);
            EXPECT_EQ(toAnsi(text), code);
            EXPECT_EQ(toUtf8(code), text);
        }
        ascii += static_cast<char>(length == 7 ? 0 : 'A' + length);
    }
}

TEST(CodePage, TakesNullForAnEmptyText) {
    for (unsigned int const codePage : CODE_PAGES) {
        UsingCodePage const use(codePage);
        EXPECT_TRUE(tvk::platform::utf8ToAnsi(nullptr, 0U).IsEmpty());
        EXPECT_TRUE(tvk::platform::ansiToUtf8(nullptr, 0U).IsEmpty());
        char output = 'x';
        EXPECT_EQ(tvk::platform::utf8ToAnsi(nullptr, std::size_t{0}, &output), 0U);
        EXPECT_EQ(tvk::platform::ansiToUtf8(nullptr, std::size_t{0}, &output), 0U);
        EXPECT_EQ(output, 'x');
    }
}

TEST(CodePage, AllocatesShortResultsOnce) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted in this build";
    }
    UsingCodePage const use(932);
    std::string const text = repeated(utf8Of(u'\u6F22'), 100);
    AllocationCounter allocations;
    CString const code =
        tvk::platform::utf8ToAnsi(text.data(), static_cast<unsigned int>(text.size()));
    EXPECT_EQ(allocations.count(), 1);
    EXPECT_EQ(code.GetLength(), 200);
    tvk::platform::ansiToUtf8(code, 200U);
    EXPECT_EQ(allocations.count(), 2);
}

// What fills the room most: for each byte of text so many bytes of result.
TEST(CodePage, NeverPassesTheRoom) {
    struct Row {
        unsigned int codePage;
        RawForm raw;
        TextForm whole;
        std::string unit;
        std::string result;
    };
    RawForm const writeRaw = tvk::platform::utf8ToAnsi;
    RawForm const readRaw = tvk::platform::ansiToUtf8;
    TextForm const write = tvk::platform::utf8ToAnsi;
    TextForm const read = tvk::platform::ansiToUtf8;
    Row const rows[] = {
        {932, writeRaw, write, "\x80", "\x81\x7C"},
        {932, readRaw, read, "\xB1", utf8Of(u'\uFF71')},
        {932, readRaw, read, bytes("\x81\0"), utf8Of(u"\u30FB") + bytes("\0")},
        {1252, writeRaw, write, "\x80", "\x81"},
        {1252, readRaw, read, "\x80", utf8Of(u'\u20AC')},
        {28591, readRaw, read, "\xFF", utf8Of(u'\u00FF')},
        {65001, writeRaw, write, "\x80", utf8Of(u'\uFFFD')},
        {65001, readRaw, read, "\xFF", utf8Of(u'\uFFFD')},
    };
    for (Row const & row : rows) {
        UsingCodePage const use(row.codePage);
        for (int const count : {1, 2, 3, 7, 8, 9, 100, 511, 512, 513, 100'000}) {
            EXPECT_EQ(convert(repeated(row.unit, count), row.raw, row.whole, 3),
                      repeated(row.result, count))
                << row.codePage;
        }
    }
}

// Pieces that random texts are made of, so that they meet in all orders.
std::string randomText(std::mt19937 & random, std::size_t size, bool isUtf8) {
    static std::vector<std::string> const UTF8_PIECES = {"a",
                                                         "=",
                                                         "e",
                                                         "Z",
                                                         "plain text of some length",
                                                         utf8Of(u'\u304B'),
                                                         utf8Of(u'\u30CF'),
                                                         utf8Of(u'\u3099'),
                                                         utf8Of(u'\u309A'),
                                                         utf8Of(u'\u0338'),
                                                         utf8Of(u'\u0308'),
                                                         utf8Of(u'\u0301'),
                                                         utf8Of(u'\u030C'),
                                                         utf8Of(u'\u0415'),
                                                         utf8Of(u'\u6F22'),
                                                         utf8Of(u'\u8868'),
                                                         utf8Of(u'\uFF71'),
                                                         utf8Of(u'\u00E9'),
                                                         utf8Of(u'\u20AC'),
                                                         utf8Of(u'\uFFFD'),
                                                         utf8Of(u"\U0001F600"),
                                                         "\xE3\x81",
                                                         "\xE3",
                                                         "\xC0\xBD",
                                                         "\xED\xA0\x80",
                                                         "\xF8\x80\xA0\x80\x80",
                                                         "\xF0\x9F"};
    static std::vector<std::string> const CODE_PIECES = {
        "a",        "\\",        "plain text of some length",
        "\x8A\xBF", "\x95\x5C",  "\x81",
        "\xE0",     "\xB1",      "\xA0",
        "\x80",     "\xFD",      "\x85\x40",
        "\x82\xA9", bytes("\0"), "\xFC\x4C",
        "\xED\x40"};
    std::vector<std::string> const & pieces = isUtf8 ? UTF8_PIECES : CODE_PIECES;
    std::string text;
    while (text.size() < size) {
        if (random() % 4 == 0) {
            text += static_cast<char>(random() & 0xFF);
        } else {
            text += pieces[random() % pieces.size()];
        }
    }
    text.resize(size);
    return text;
}

TEST(CodePage, AgreesWithThePlainModel) {
    for (unsigned int const codePage : CODE_PAGES) {
        SCOPED_TRACE(codePage);
        CodePageModel const model(codePage);
        UsingCodePage const use(codePage);
        std::mt19937 random(20'190'401U + codePage);
        for (std::size_t size = 0; size <= 100; ++size) {
            for (int round = 0; round < 60; ++round) {
                std::string const text = randomText(random, size, true);
                ASSERT_EQ(toAnsi(text), model.fromUtf8(text)) << ::testing::PrintToString(text);
                std::string const code = randomText(random, size, false);
                ASSERT_EQ(toUtf8(code), model.toUtf8(code)) << ::testing::PrintToString(code);
            }
        }
    }
}

TEST(CodePage, AgreesWithThePlainModelOnAllPairsOfBytes) {
    for (unsigned int const codePage : CODE_PAGES) {
        SCOPED_TRACE(codePage);
        CodePageModel const model(codePage);
        UsingCodePage const use(codePage);
        for (unsigned int pair = 0; pair < 0x10000; ++pair) {
            char const text[] = {static_cast<char>(pair >> 8), static_cast<char>(pair), 'x'};
            for (std::size_t const size : {std::size_t{2}, std::size_t{3}}) {
                char output[9];
                std::string_view const view(text, size);
                std::size_t length = tvk::platform::utf8ToAnsi(text, size, output);
                ASSERT_EQ(std::string_view(output, length), model.fromUtf8(view)) << pair;
                length = tvk::platform::ansiToUtf8(text, size, output);
                ASSERT_EQ(std::string_view(output, length), model.toUtf8(view)) << pair;
            }
        }
    }
}

/// The same by the conversion of whole texts; what it replaces with U+30FB is no character, but for the
/// code of U+30FB itself.
int characterByConversion(unsigned int codePage, std::string const & bytes) {
    UsingCodePage const inUse(codePage);
    std::string const utf8 = toUtf8(bytes);
    for (unsigned int unit = 0; unit < 0x10000; ++unit) {
        if (!isSurrogate(unit) && utf8Of(static_cast<char16_t>(unit)) == utf8) {
            return unit == 0x30FB && bytes != "\x81\x45" ? -1 : static_cast<int>(unit);
        }
    }
    return -1;
}

TEST(CodePage, TellsTheCharacterOfOneByteWhicheverPageIsSet) {
    for (unsigned int const codePage : {932U, 1252U, 28591U}) {
        for (unsigned int byte = 0; byte < 0x100; ++byte) {
            std::string const bytes(1, static_cast<char>(byte));
            ExactBuffer const block(bytes);
            EXPECT_EQ(tvk::platform::characterInCodePage(codePage, block.data(), 1),
                      characterByConversion(codePage, bytes))
                << codePage << ' ' << byte;
        }
    }
    for (unsigned int const codePage : {65001U, 0U, 1251U}) {
        EXPECT_EQ(tvk::platform::characterInCodePage(codePage, "a", 1), -1);
    }
}

std::ptrdiff_t charactersIn(std::string_view utf8) {
    return std::count_if(utf8.begin(), utf8.end(), [](char byte) { return (byte & 0xC0) != 0x80; });
}

TEST(CodePage, TellsTheCharacterOfEachPairOfBytes) {
    CodePageModel const model(932);
    for (unsigned int lead = 0; lead < 0x100; ++lead) {
        for (unsigned int trail = 0; trail < 0x100; ++trail) {
            std::string const bytes{static_cast<char>(lead), static_cast<char>(trail)};
            std::string const utf8 = model.toUtf8(bytes);
            ExactBuffer const block(bytes);
            int const character = tvk::platform::characterInCodePage(932, block.data(), 2);
            if (character >= 0) {
                EXPECT_EQ(utf8Of(static_cast<char16_t>(character)), utf8) << lead << ' ' << trail;
            } else {
                EXPECT_TRUE(charactersIn(utf8) > 1 || utf8 == "\u30FB") << lead << ' ' << trail;
            }
            for (unsigned int const codePage : {1252U, 28591U, 65001U}) {
                EXPECT_EQ(tvk::platform::characterInCodePage(codePage, block.data(), 2), -1);
            }
        }
    }
    EXPECT_EQ(tvk::platform::characterInCodePage(932, "\x81\x45", 2), 0x30FB);
    EXPECT_EQ(tvk::platform::characterInCodePage(932, "a", 0), -1);
    EXPECT_EQ(tvk::platform::characterInCodePage(932, "\x81\x45\x81", 3), -1);
}

TEST(CodePage, IsStableOnceItHasReplaced) {
    for (unsigned int const codePage : CODE_PAGES) {
        SCOPED_TRACE(codePage);
        UsingCodePage const use(codePage);
        std::mt19937 random(7U + codePage);
        for (int round = 0; round < 2000; ++round) {
            std::string const code =
                toAnsi(randomText(random, static_cast<std::size_t>(round % 60), true));
            ASSERT_EQ(toAnsi(toUtf8(code)), code);
            std::string const text =
                toUtf8(randomText(random, static_cast<std::size_t>(round % 60), false));
            ASSERT_EQ(toUtf8(toAnsi(text)), text);
        }
    }
}

TEST(CodePage, ConvertsOnManyThreadsAtOnce) {
    UsingCodePage const use(932);
    std::mt19937 random(99);
    std::string const text = randomText(random, 3000, true);
    std::string const code = CodePageModel(932).fromUtf8(text);
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    for (std::string & result : results) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                result = toAnsi(text);
            }
        });
    }
    for (std::thread & thread : threads) {
        thread.join();
    }
    for (std::string const & result : results) {
        EXPECT_EQ(result, code);
    }
}

}  // namespace
