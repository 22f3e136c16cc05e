#include <gtest/gtest.h>
#include <locale.h>
#include <wchar.h>

#include <string>

#include "examples/support/Columns.h"
#include "tvk/platform/CodePage.h"
#include "tvk/text/StringUtil.h"

namespace tvk::test {

namespace {

/// wcwidth of the system in a UTF-8 locale.
class SystemWidth {
public:
    SystemWidth() : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
        if (locale_ != nullptr) {
            before_ = uselocale(locale_);
        }
    }
    ~SystemWidth() {
        if (locale_ != nullptr) {
            uselocale(before_);
            freelocale(locale_);
        }
    }
    SystemWidth(SystemWidth const &) = delete;
    SystemWidth & operator=(SystemWidth const &) = delete;

    bool isKnown() const { return locale_ != nullptr; }
    int of(int character) const { return wcwidth(static_cast<wchar_t>(character)); }

private:
    locale_t locale_;
    locale_t before_{};
};

}  // namespace

TEST(Columns, CountsWideCharactersAsTwo) {
    struct Row {
        char const * text;
        std::size_t width;
    };
    constexpr Row ROWS[] = {
        {"", 0},
        {"board ~", 7},
        {"\xE9\x8A\x98\xE6\x9F\x84", 4},                          // kanji
        {"\xE3\x82\xB3\xE3\x83\xBC\xE3\x83\x89", 6},              // katakana with its long mark
        {"\xEF\xBD\xBA\xEF\xBD\xB0\xEF\xBE\x84\xEF\xBE\x9E", 4},  // half-width katakana
        {"\xEF\xBC\xA1\xEF\xBC\x91", 4},                          // full-width A1
        {"\xE3\x80\x80\xE3\x80\x81", 4},                          // ideographic space and comma
        {"\xE3\x81\x8B\xE3\x82\x99", 2},                          // ka with a combining voiced mark
        {"e\xCC\x81", 1},
        {"\xC3\xA9", 1},
        {"\xF0\xA0\xAE\xB7", 2},  // U+20BB7
    };
    for (Row const & row : ROWS) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(displayWidth(row.text), row.width);
    }
}

TEST(Columns, AgreesWithTheSystemOnTheCharactersOfTheCodePage) {
    SystemWidth const system;
    if (!system.isKnown()) {
        GTEST_SKIP() << "no locale C.UTF-8";
    }
    int compared = 0;
    for (int lead = 0x81; lead <= 0xFC; ++lead) {
        for (int trail = 0x40; trail <= 0xFC; ++trail) {
            bool const isPrivate = lead >= 0xF0 && lead <= 0xF9;
            char const pair[] = {static_cast<char>(lead), static_cast<char>(trail)};
            CString const utf8 = platform::ansiToUtf8(pair, sizeof pair);
            auto const length = static_cast<unsigned int>(utf8.GetLength());
            unsigned int step = 0;
            int const character = StringUtil::nextUtf8Char(utf8.GetString(), length, 0, &step);
            if (isPrivate || step != length || trail == 0x7F) {
                continue;  // no character, or one that is drawn as its owner likes
            }
            ASSERT_EQ(static_cast<int>(displayWidth({utf8.GetString(), length})),
                      system.of(character))
                << std::hex << character;
            ++compared;
        }
    }
    EXPECT_GT(compared, 7000);
}

TEST(Columns, PutsCellsBelowEachOther) {
    Columns columns({"A", "Name", "C"});
    columns.add({"x", "\xE9\x8A\x98\xE6\x9F\x84\xE5\x90\x8D", "1"});
    columns.add({"long", "ab", ""});
    columns.add({"", "abcde", "2"});
    EXPECT_EQ(columns.text(),
              "A     Name    C\n"
              "----  ------  -\n"
              "x     \xE9\x8A\x98\xE6\x9F\x84\xE5\x90\x8D  1\n"
              "long  ab\n"
              "      abcde   2\n");
}

TEST(Columns, LeavesOutColumnsWithNothingInThem) {
    Columns columns({"A", "B", "C"});
    columns.add({"x", "", "y"});
    columns.add({"z"});
    EXPECT_EQ(columns.text(),
              "A  C\n"
              "-  -\n"
              "x  y\n"
              "z\n");
    EXPECT_EQ(Columns({"A", "B"}).text(), "\n\n");
}

}  // namespace tvk::test
