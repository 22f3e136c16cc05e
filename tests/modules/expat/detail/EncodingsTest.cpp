#include "modules/expat/detail/Encodings.h"

#include <gtest/gtest.h>

#include "tvk/platform/CodePage.h"

namespace tvk::expat {
namespace {

constexpr int NO_CHARACTER = -1;
constexpr int STARTS_A_PAIR = -2;

TEST(Encodings, AreKnownByTheirNamesInAnyCase) {
    for (char const * name :
         {"Shift_JIS", "shift_jis", "SHIFT-JIS", "sjis", "x-sjis", "MS_Kanji", "csShiftJIS",
          "Windows-31J", "windows-31j", "csWindows31J", "MS932", "cp932"}) {
        XML_Encoding encoding{};
        EXPECT_EQ(findEncoding(nullptr, name, &encoding), XML_STATUS_OK) << name;
        EXPECT_EQ(encoding.map[0x88], STARTS_A_PAIR) << name;
    }
    for (char const * name : {"Windows-1252", "windows-1252", "CP1252"}) {
        XML_Encoding encoding{};
        EXPECT_EQ(findEncoding(nullptr, name, &encoding), XML_STATUS_OK) << name;
        EXPECT_EQ(encoding.map[0x80], 0x20AC) << name;
    }
}

TEST(Encodings, OfOtherNamesAreNotKnown) {
    for (char const * name :
         {"", "EUC-JP", "ISO-2022-JP", "Shift_JISX0213", "Shift_JI", "932", "UTF-7", "\x83\x56"}) {
        XML_Encoding encoding{};
        EXPECT_EQ(findEncoding(nullptr, name, &encoding), XML_STATUS_ERROR) << name;
    }
}

TEST(Encodings, AreThoseOfTheCodePages) {
    XML_Encoding japanese{};
    XML_Encoding western{};
    ASSERT_EQ(findEncoding(nullptr, "Shift_JIS", &japanese), XML_STATUS_OK);
    ASSERT_EQ(findEncoding(nullptr, "Windows-1252", &western), XML_STATUS_OK);
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        auto const lead = static_cast<char>(byte);
        int const single = platform::characterInCodePage(932, &lead, 1);
        bool const isLead = (byte > 0x80 && byte < 0xA0) || (byte >= 0xE0 && byte < 0xFD);
        if (single >= 0) {
            EXPECT_EQ(japanese.map[byte], single);
        } else {
            EXPECT_TRUE(japanese.map[byte] == STARTS_A_PAIR || japanese.map[byte] == NO_CHARACTER);
            EXPECT_TRUE(japanese.map[byte] == NO_CHARACTER || isLead);
        }
        EXPECT_EQ(western.map[byte], platform::characterInCodePage(1252, &lead, 1));
        for (int trail = 0; japanese.map[byte] == STARTS_A_PAIR && trail < 256; ++trail) {
            char const pair[] = {lead, static_cast<char>(trail)};
            ASSERT_EQ(japanese.convert(japanese.data, pair),
                      platform::characterInCodePage(932, pair, 2));
        }
    }
    char const latin[] = {'\x82', '\xA0'};
    EXPECT_EQ(japanese.convert(japanese.data, latin), 0x3042);
}

}  // namespace
}  // namespace tvk::expat
