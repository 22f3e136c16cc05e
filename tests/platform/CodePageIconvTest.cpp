// The tables against the system's own converter, code by code. Where the two differ on purpose, the
// difference stands here with its reason.

#include <gtest/gtest.h>
#include <iconv.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "tests/support/UsingCodePage.h"
#include "tvk/platform/CodePage.h"

namespace {

using tvk::test::UsingCodePage;

// One conversion of the system's, or none where its tables are not installed.
class SystemConverter {
public:
    SystemConverter(char const * to, char const * from) : handle_(iconv_open(to, from)) {}
    ~SystemConverter() {
        if (available()) {
            iconv_close(handle_);
        }
    }
    SystemConverter(SystemConverter const &) = delete;
    SystemConverter & operator=(SystemConverter const &) = delete;

    bool available() const { return handle_ != iconv_t(-1); }

    /// Nothing where the converter refuses the text.
    std::optional<std::string> convert(std::string text) const {
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        char output[16];
        char * in = text.data();
        char * out = output;
        std::size_t inLeft = text.size();
        std::size_t outLeft = sizeof output;
        if (iconv(handle_, &in, &inLeft, &out, &outLeft) != 0 || inLeft != 0) {
            return std::nullopt;
        }
        return std::string(output, sizeof output - outLeft);
    }

private:
    iconv_t handle_;
};

std::string fromLibrary(std::string const & text,
                        CString (*conversion)(void const *, unsigned int)) {
    CString const result = conversion(text.data(), static_cast<unsigned int>(text.size()));
    return std::string(result, static_cast<std::size_t>(result.GetLength()));
}
std::string toAnsi(std::string const & text) {
    return fromLibrary(text, tvk::platform::utf8ToAnsi);
}
std::string toUtf8(std::string const & text) {
    return fromLibrary(text, tvk::platform::ansiToUtf8);
}

std::string utf8Of(unsigned int unit) {
    auto const byte = [](unsigned int value) { return static_cast<char>(value); };
    if (unit < 0x80) {
        return {byte(unit)};
    }
    if (unit < 0x800) {
        return {byte(0xC0 | unit >> 6), byte(0x80 | (unit & 0x3F))};
    }
    return {byte(0xE0 | unit >> 12), byte(0x80 | (unit >> 6 & 0x3F)), byte(0x80 | (unit & 0x3F))};
}

bool isSurrogate(unsigned int unit) { return unit >= 0xD800 && unit < 0xE000; }

struct Difference {
    std::string_view ours;
    char const * reason;
};
using Differences = std::map<unsigned int, Difference>;

constexpr char ONE_OF_FIVE_SINGLE_BYTES[] =
    "the platform gives each of the bytes 80, A0, FD, FE, FF a character, the system none";
constexpr char NO_BEST_FIT[] =
    "the system writes the code of a look-alike, which would come back as another character";

void expectSameWriting(SystemConverter const & system, Differences const & wanted,
                       std::string_view defaultCode) {
    std::size_t met = 0;
    for (unsigned int unit = 0; unit < 0x10000; ++unit) {
        if (isSurrogate(unit)) {
            continue;
        }
        std::string const text = utf8Of(unit);
        std::string const theirs = system.convert(text).value_or(std::string(defaultCode));
        std::string const ours = toAnsi(text);
        auto const difference = wanted.find(unit);
        if (difference == wanted.end()) {
            EXPECT_EQ(ours, theirs) << std::hex << unit;
        } else {
            ++met;
            EXPECT_EQ(ours, difference->second.ours) << std::hex << unit;
            EXPECT_NE(ours, theirs)
                << std::hex << unit << " no longer differs: " << difference->second.reason;
        }
    }
    EXPECT_EQ(met, wanted.size());
}

TEST(CodePageIconv, Writes932AsTheSystemButForTheListed) {
    SystemConverter const system("CP932", "UTF-8");
    if (!system.available()) {
        GTEST_SKIP() << "this system's iconv has no CP932";
    }
    UsingCodePage const use(932);
    // U+2212 is refused on purpose too, and cannot be told apart here: the system writes 81 7C for
    // it, the code of U+FF0D, which happens to be the default code.
    Differences const wanted = {
        {0x0080, {"\x80", ONE_OF_FIVE_SINGLE_BYTES}},
        {0xF8F0, {"\xA0", ONE_OF_FIVE_SINGLE_BYTES}},
        {0xF8F1, {"\xFD", ONE_OF_FIVE_SINGLE_BYTES}},
        {0xF8F2, {"\xFE", ONE_OF_FIVE_SINGLE_BYTES}},
        {0xF8F3, {"\xFF", ONE_OF_FIVE_SINGLE_BYTES}},
        {0x00A2, {"\x81\x7C", NO_BEST_FIT}},  // cent sign: 81 91
        {0x00A3, {"\x81\x7C", NO_BEST_FIT}},  // pound sign: 81 92
        {0x00A5, {"\x81\x7C", NO_BEST_FIT}},  // yen sign: 5C
        {0x00AC, {"\x81\x7C", NO_BEST_FIT}},  // not sign: 81 CA
        {0x2014, {"\x81\x7C", NO_BEST_FIT}},  // em dash: 81 5C
        {0x2016, {"\x81\x7C", NO_BEST_FIT}},  // double vertical line: 81 61
        {0x203E, {"\x81\x7C", NO_BEST_FIT}},  // overline: 7E
        {0x301C, {"\x81\x7C", NO_BEST_FIT}},  // wave dash: 81 60
    };
    expectSameWriting(system, wanted, "\x81\x7C");
}

TEST(CodePageIconv, Reads932AsTheSystemButForTheListed) {
    SystemConverter const system("UTF-8", "CP932");
    if (!system.available()) {
        GTEST_SKIP() << "this system's iconv has no CP932";
    }
    UsingCodePage const use(932);
    Differences const singles = {
        {0x80, {"\xC2\x80", ONE_OF_FIVE_SINGLE_BYTES}},
        {0xA0, {"\xEF\xA3\xB0", ONE_OF_FIVE_SINGLE_BYTES}},
        {0xFD, {"\xEF\xA3\xB1", ONE_OF_FIVE_SINGLE_BYTES}},
        {0xFE, {"\xEF\xA3\xB2", ONE_OF_FIVE_SINGLE_BYTES}},
        {0xFF, {"\xEF\xA3\xB3", ONE_OF_FIVE_SINGLE_BYTES}},
    };
    std::string const middleDot = "\xE3\x83\xBB";
    for (unsigned int lead = 0; lead < 0x100; ++lead) {
        std::string const single(1, static_cast<char>(lead));
        std::optional<std::string> const theirSingle = system.convert(single);
        if (auto const difference = singles.find(lead); difference != singles.end()) {
            EXPECT_EQ(toUtf8(single), difference->second.ours) << std::hex << lead;
            EXPECT_FALSE(theirSingle.has_value()) << std::hex << lead;
            continue;
        }
        if (theirSingle.has_value()) {
            EXPECT_EQ(toUtf8(single), *theirSingle) << std::hex << lead;
            continue;
        }
        // A lead byte. What the system refuses, the platform replaces: the lead byte alone and all
        // undefined pairs, the trail byte included unless it is NUL.
        EXPECT_EQ(toUtf8(single), middleDot) << std::hex << lead;
        for (unsigned int trail = 0; trail < 0x100; ++trail) {
            std::string const pair = {static_cast<char>(lead), static_cast<char>(trail)};
            std::string const replaced = trail == 0 ? middleDot + '\0' : middleDot;
            EXPECT_EQ(toUtf8(pair), system.convert(pair).value_or(replaced))
                << std::hex << lead << ' ' << trail;
        }
    }
}

TEST(CodePageIconv, Writes1252AsTheSystemButForTheListed) {
    SystemConverter const system("CP1252", "UTF-8");
    if (!system.available()) {
        GTEST_SKIP() << "this system's iconv has no CP1252";
    }
    UsingCodePage const use(1252);
    constexpr char CONTROL[] = "the platform gives the five free bytes the control of their number";
    // 81 is one of the five, and the default code as well.
    Differences const wanted = {
        {0x8D, {"\x8D", CONTROL}},
        {0x8F, {"\x8F", CONTROL}},
        {0x90, {"\x90", CONTROL}},
        {0x9D, {"\x9D", CONTROL}},
    };
    expectSameWriting(system, wanted, "\x81");
}

TEST(CodePageIconv, Writes28591AsTheSystem) {
    SystemConverter const system("ISO-8859-1", "UTF-8");
    if (!system.available()) {
        GTEST_SKIP() << "this system's iconv has no ISO-8859-1";
    }
    UsingCodePage const use(28591);
    expectSameWriting(system, {}, "\x81");
}

TEST(CodePageIconv, ReadsSingleBytesAsTheSystem) {
    for (auto const & [codePage, name] :
         std::map<unsigned int, char const *>{{1252, "CP1252"}, {28591, "ISO-8859-1"}}) {
        SystemConverter const system("UTF-8", name);
        if (!system.available()) {
            GTEST_SKIP() << "this system's iconv has no " << name;
        }
        UsingCodePage const use(codePage);
        for (unsigned int byte = 0; byte < 0x100; ++byte) {
            std::string const code(1, static_cast<char>(byte));
            // The system refuses the five free bytes of 1252 alone.
            EXPECT_EQ(toUtf8(code), system.convert(code).value_or(utf8Of(byte)))
                << name << ' ' << std::hex << byte;
        }
    }
}

}  // namespace
