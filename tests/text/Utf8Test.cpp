// The UTF-8 codec, which JsonUtil and StringUtil offer under the same names.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/ReferenceUtf8.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/text/StringUtil.h"

namespace {

using namespace std::literals;
using namespace tvk::test;
using tvk::CString;
using tvk::ErrorInfo;
using tvk::JsonUtil;
using tvk::KestrinConstants;
using tvk::StringUtil;

using Decoder = int (*)(char const *, unsigned int, unsigned int, unsigned int *);
using CopyingDecoder = int (*)(char const *, unsigned int, unsigned int, unsigned int *, char *);

// An explicit instantiation may name private members: so the tests reach the copying decoders.
template <class Util, CopyingDecoder CHECKED, CopyingDecoder TRUSTING>
struct Reach {
    friend CopyingDecoder checkedCopyingOf(Util *) { return CHECKED; }
    friend CopyingDecoder trustingCopyingOf(Util *) { return TRUSTING; }
};

CopyingDecoder checkedCopyingOf(JsonUtil *);
CopyingDecoder trustingCopyingOf(JsonUtil *);
CopyingDecoder checkedCopyingOf(StringUtil *);
CopyingDecoder trustingCopyingOf(StringUtil *);

template struct Reach<JsonUtil, &JsonUtil::fastNextUtf8Char, &JsonUtil::fastNextUtf8Char4>;
template struct Reach<StringUtil, &StringUtil::fastNextUtf8Char, &StringUtil::fastNextUtf8Char4>;

constexpr unsigned int UNTOUCHED = 77;

std::string bytesOf(std::initializer_list<int> values) {
    std::string bytes;
    for (int const value : values) {
        bytes.push_back(static_cast<char>(value));
    }
    return bytes;
}

template <class Util>
class Utf8Test : public ::testing::Test {
protected:
    using Error = typename Util::XParsingError;

    static std::string encoded(int codePoint) {
        char bytes[6];
        int const size = Util::utf8Encode(bytes, sizeof bytes, codePoint);
        return {bytes, static_cast<std::size_t>(size)};
    }

    /// Calls both forms of a decoder and requires one result of them.
    static DecodedCharacter decoded(Decoder decoder, CopyingDecoder copying, std::string_view text,
                                    unsigned int position) {
        ExactBuffer const data(text);
        DecodedCharacter const plain = caught([&] {
            unsigned int size = UNTOUCHED;
            int const codePoint = decoder(data, data.length(), position, &size);
            return DecodedCharacter{codePoint, size, {}};
        });
        char bytes[8];
        std::memset(bytes, '?', sizeof bytes);
        DecodedCharacter const copied = caught([&] {
            unsigned int size = UNTOUCHED;
            int const codePoint = copying(data, data.length(), position, &size, bytes);
            return DecodedCharacter{codePoint, size, {}};
        });
        EXPECT_EQ(plain, copied);
        std::string_view const source = text.substr(std::min<std::size_t>(position, text.size()));
        std::string expected(sizeof bytes, '?');
        if (copied.failure.empty() && copied.size != UNTOUCHED) {
            expected.replace(0, copied.size, source.substr(0, copied.size));
        }
        EXPECT_EQ(std::string(bytes, sizeof bytes), expected);
        return plain;
    }

    static DecodedCharacter checked(std::string_view text, unsigned int position = 0) {
        return decoded(Util::nextUtf8Char, checkedCopyingOf(static_cast<Util *>(nullptr)), text,
                       position);
    }
    static DecodedCharacter trusted(std::string_view text, unsigned int position = 0) {
        return decoded(Util::nextUtf8Char4, trustingCopyingOf(static_cast<Util *>(nullptr)), text,
                       position);
    }

    /// What the checking decoder must give.
    static DecodedCharacter expected(std::string_view text, unsigned int position = 0) {
        DecodedCharacter result = referenceDecode(text, position, TrailBytes::TESTED);
        if (result.failure.empty() && result.size == 0) {
            result.size = UNTOUCHED;
        }
        return result;
    }

    /// Both decoders on one sequence that stands alone.
    static void expectAgreement(std::string const & text) {
        DecodedCharacter const wanted = expected(text);
        DecodedCharacter const strict = checked(text);
        if (!(strict == wanted)) {
            ADD_FAILURE() << ::testing::PrintToString(text) << ": " << strict.codePoint << " in "
                          << strict.size << " bytes, \"" << strict.failure << "\"; expected "
                          << wanted.codePoint << " in " << wanted.size << " bytes, \""
                          << wanted.failure << '"';
        }
        bool const readable = !text.empty() && (text.size() >= sizeAnnouncedBy(text[0]) ||
                                                sizeAnnouncedBy(text[0]) > 4);
        if (readable) {
            EXPECT_EQ(trusted(text), referenceDecode(text, 0, TrailBytes::TAKEN_AS_THEY_COME))
                << ::testing::PrintToString(text);
        }
    }

private:
    template <class Call>
    static DecodedCharacter caught(Call call) {
        try {
            return call();
        } catch (Error const & error) {
            return {0, 0, error.getErrorMessage()};
        }
    }
};

using Utils = ::testing::Types<JsonUtil, StringUtil>;
TYPED_TEST_SUITE(Utf8Test, Utils);

struct EncodeRow {
    int codePoint;
    std::initializer_list<int> bytes;
};

EncodeRow const ENCODE_ROWS[] = {
    {0, {0x00}},
    {0x41, {0x41}},
    {0x7F, {0x7F}},
    {0x80, {0xC2, 0x80}},
    {0x7FF, {0xDF, 0xBF}},
    {0x800, {0xE0, 0xA0, 0x80}},
    {0x3042, {0xE3, 0x81, 0x82}},
    {0xD800, {0xED, 0xA0, 0x80}},
    {0xFFFF, {0xEF, 0xBF, 0xBF}},
    {0x10000, {0xF0, 0x90, 0x80, 0x80}},
    {0x1F600, {0xF0, 0x9F, 0x98, 0x80}},
    {0x1FFFF, {0xF0, 0x9F, 0xBF, 0xBF}},
    {0x20000, {0xF8, 0x80, 0xA0, 0x80, 0x80}},
    {0x10FFFF, {0xF8, 0x84, 0x8F, 0xBF, 0xBF}},
    {0x3FFFFFF, {0xFB, 0xBF, 0xBF, 0xBF, 0xBF}},
    {0x4000000, {0xFC, 0x84, 0x80, 0x80, 0x80, 0x80}},
    {0x7FFFFFFF, {0xFD, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF}},
};

TYPED_TEST(Utf8Test, EncodesByTheBordersOfTheLengths) {
    for (EncodeRow const & row : ENCODE_ROWS) {
        EXPECT_EQ(this->encoded(row.codePoint), bytesOf(row.bytes)) << row.codePoint;
    }
}

TYPED_TEST(Utf8Test, DeliberateFiveBytesFrom20000On) {
    EXPECT_EQ(this->encoded(0x1FFFF).size(), 4U);
    EXPECT_EQ(this->encoded(0x20000), bytesOf({0xF8, 0x80, 0xA0, 0x80, 0x80}));
    EXPECT_EQ(this->encoded(0x1FFFFF).size(), 5U);
}

TYPED_TEST(Utf8Test, EncodesANegativeValueAsItsLowByte) {
    EXPECT_EQ(this->encoded(-1), "\xFF");
    EXPECT_EQ(this->encoded(-0x80), "\x80");
    EXPECT_EQ(this->encoded(INT_MIN + 0x41), "A");
    EXPECT_EQ(this->encoded(-256), "\0"sv);
}

TYPED_TEST(Utf8Test, EncodesNothingWithoutRoomForAll) {
    for (EncodeRow const & row : ENCODE_ROWS) {
        auto const size = static_cast<unsigned int>(row.bytes.size());
        for (unsigned int room = 0; room <= size; ++room) {
            ExactBuffer buffer(std::string(room, '?'));
            int const written = TypeParam::utf8Encode(buffer.data(), room, row.codePoint);
            std::string_view const content(buffer.data(), room);
            if (room < size) {
                EXPECT_EQ(written, 0);
                EXPECT_EQ(content, std::string(room, '?'));
            } else {
                EXPECT_EQ(written, static_cast<int>(size));
                EXPECT_EQ(content, bytesOf(row.bytes));
            }
        }
    }
}

TYPED_TEST(Utf8Test, ReadsBackWhatItWrote) {
    std::vector<int> codePoints;
    for (EncodeRow const & row : ENCODE_ROWS) {
        for (int near = -3; near <= 3; ++near) {
            long long const codePoint = static_cast<long long>(row.codePoint) + near;
            if (codePoint >= 0 && codePoint <= INT_MAX) {
                codePoints.push_back(static_cast<int>(codePoint));
            }
        }
    }
    for (int codePoint = 0; codePoint < 0x30000; codePoint += 7) {
        codePoints.push_back(codePoint);
    }
    std::mt19937 random(20240);
    for (int i = 0; i < 20000; ++i) {
        codePoints.push_back(static_cast<int>(random() >> (1 + random() % 30)));
    }
    for (int const codePoint : codePoints) {
        std::string const text = this->encoded(codePoint);
        auto const size = static_cast<unsigned int>(text.size());
        EXPECT_EQ(this->checked(text), (DecodedCharacter{codePoint, size, {}})) << codePoint;
        EXPECT_EQ(this->trusted(text), (DecodedCharacter{codePoint, size, {}})) << codePoint;
    }
}

TYPED_TEST(Utf8Test, ConvertsSurrogatePairs) {
    EXPECT_EQ(TypeParam::surrogatesPairToCodePoint(0xD83D, 0xDE00), 0x1F600);
    EXPECT_EQ(TypeParam::surrogatesPairToCodePoint(0xD800, 0xDC00), 0x10000);
    EXPECT_EQ(TypeParam::surrogatesPairToCodePoint(0xDBFF, 0xDFFF), 0x10FFFF);
    for (int codePoint = 0x10000; codePoint <= 0x10FFFF; codePoint += 101) {
        int high = 0;
        int low = 0;
        TypeParam::codePointToSurrogatesPair(codePoint, &high, &low);
        EXPECT_TRUE(TypeParam::isHighSurrogate(high));
        EXPECT_TRUE(TypeParam::isLowSurrogate(low));
        EXPECT_EQ(TypeParam::surrogatesPairToCodePoint(high, low), codePoint);
    }
}

TYPED_TEST(Utf8Test, ChecksNoArgumentOfTheSurrogateFunctions) {
    EXPECT_EQ(TypeParam::surrogatesPairToCodePoint(0xD7F7, 5), 5);
    EXPECT_EQ(TypeParam::surrogatesPairToCodePoint(0, 0), -0xD7F7 * 1024);
    TypeParam::surrogatesPairToCodePoint(INT_MIN, INT_MAX);  // wraps, and is no undefined behaviour

    struct Row {
        int codePoint, high, low;
    };
    // Signed division that truncates toward zero.
    constexpr Row ROWS[] = {{0xFFFF, 0xD800, 0xDC00 - 1},
                            {0x10000 - 1024, 0xD800 - 1, 0xDC00},
                            {0x10000 - 1025, 0xD800 - 1, 0xDC00 - 1},
                            {0, 0xD800 - 64, 0xDC00},
                            {0x110000, 0xDC00, 0xDC00}};
    for (Row const & row : ROWS) {
        int high = 0;
        int low = 0;
        TypeParam::codePointToSurrogatesPair(row.codePoint, &high, &low);
        EXPECT_EQ(high, row.high) << row.codePoint;
        EXPECT_EQ(low, row.low) << row.codePoint;
    }
}

TYPED_TEST(Utf8Test, KnowsTheSurrogates) {
    struct Row {
        int value;
        bool high, low;
    };
    constexpr Row ROWS[] = {{0xD7FF, false, false}, {0xD800, true, false}, {0xDBFF, true, false},
                            {0xDC00, false, true},  {0xDFFF, false, true}, {0xE000, false, false},
                            {-1, false, false},     {0, false, false},     {INT_MAX, false, false}};
    for (Row const & row : ROWS) {
        EXPECT_EQ(TypeParam::isHighSurrogate(row.value), row.high) << row.value;
        EXPECT_EQ(TypeParam::isLowSurrogate(row.value), row.low) << row.value;
    }
}

TYPED_TEST(Utf8Test, LeavesEverythingAloneAtTheEndOfTheData) {
    unsigned int byteCount = UNTOUCHED;
    char bytes[] = "??????";
    auto const copying = checkedCopyingOf(static_cast<TypeParam *>(nullptr));
    for (unsigned int const position : {1U, 2U, 1000U, UINT_MAX}) {
        ExactBuffer const data("A");
        EXPECT_EQ(TypeParam::nextUtf8Char(data, 1, position, &byteCount), 0);
        EXPECT_EQ(copying(data, 1, position, &byteCount, bytes), 0);
    }
    EXPECT_EQ(TypeParam::nextUtf8Char(ExactBuffer(""), 0, 0, &byteCount), 0);
    EXPECT_EQ(byteCount, UNTOUCHED);
    EXPECT_STREQ(bytes, "??????");
}

TYPED_TEST(Utf8Test, TellsARealNulFromTheEnd) {
    EXPECT_EQ(this->checked("\0"sv), (DecodedCharacter{0, 1, {}}));
    EXPECT_EQ(this->trusted("\0"sv), (DecodedCharacter{0, 1, {}}));
}

struct FailureRow {
    std::initializer_list<int> bytes;
    char const * message;
};

FailureRow const FAILURE_ROWS[] = {
    {{0x80}, "unable to decide UTF-8 character length"},
    {{0xBF}, "unable to decide UTF-8 character length"},
    {{0xFE, 0x80, 0x80, 0x80, 0x80, 0x80}, "unable to decide UTF-8 character length"},
    {{0xFF, 0x80, 0x80, 0x80, 0x80, 0x80}, "unable to decide UTF-8 character length"},
    {{0xC3}, "no enough bytes(at least 2 bytes expected)"},
    {{0xE3, 0x81}, "no enough bytes(at least 3 bytes expected)"},
    {{0xF0, 0x9F, 0x98}, "no enough bytes(at least 4 bytes expected)"},
    {{0xF8, 0x80, 0xA0, 0x80}, "no enough bytes(at least 5 bytes expected)"},
    {{0xFC, 0x84, 0x80, 0x80, 0x80}, "no enough bytes(at least 6 bytes expected)"},
    {{0xC3, 0x28}, "invalid UTF-8 2-byte sequence"},
    {{0xE3, 0x81, 0xC0}, "invalid UTF-8 3-byte sequence"},
    {{0xF0, 0x41, 0x98, 0x80}, "invalid UTF-8 4-byte sequence"},
    {{0xF8, 0x80, 0xFF, 0x80, 0x80}, "invalid UTF-8 5-byte sequence"},
    {{0xFC, 0x84, 0x80, 0x80, 0x80, 0x00}, "invalid UTF-8 6-byte sequence"},
};

TYPED_TEST(Utf8Test, RefusesWithTheExactText) {
    for (FailureRow const & row : FAILURE_ROWS) {
        for (unsigned int const position : {0U, 1U, 1234567U}) {
            std::string const text = std::string(position, 'x') + bytesOf(row.bytes);
            EXPECT_EQ(this->checked(text, position).failure, "invalid message data near position " +
                                                                 std::to_string(position) + ": " +
                                                                 row.message);
        }
    }
}

TYPED_TEST(Utf8Test, TrustingDecoderTestsOnlyTheLeadAndTheLengthOfFiveAndSix) {
    EXPECT_EQ(this->trusted(bytesOf({0xC3, 0x28})),
              (DecodedCharacter{(0xC3 & 0x1F) << 6 | (0x28 & 0x3F), 2, {}}));
    EXPECT_EQ(this->trusted(bytesOf({0x80})).failure, undecidedText(0));
    EXPECT_EQ(this->trusted(bytesOf({0x41, 0xFE}), 1).failure, undecidedText(1));
    EXPECT_EQ(this->trusted(bytesOf({0xF8, 0x80, 0xA0, 0x80})).failure, cutSequenceText(0, 5));
    EXPECT_EQ(this->trusted(bytesOf({0x41, 0xFC, 0, 0, 0, 0}), 1).failure, cutSequenceText(1, 6));
    EXPECT_EQ(this->trusted(bytesOf({0xF8, 'A', 'A', 'A', 'A'})).size, 5U);
    EXPECT_EQ(this->trusted(bytesOf({0xFC, 0, 0xFF, 'A', 'A', 'A'})).size, 6U);
}

TYPED_TEST(Utf8Test, TrustingDecoderLooksAtNoLengthUpToFourBytes) {
    unsigned int byteCount = 0;
    EXPECT_EQ(TypeParam::nextUtf8Char4("A", 0, 0, &byteCount), 'A');
    EXPECT_EQ(byteCount, 1U);
    EXPECT_EQ(TypeParam::nextUtf8Char4("\xF0\x9F\x98\x80", 0, 0, &byteCount), 0x1F600);
    EXPECT_EQ(byteCount, 4U);
}

TYPED_TEST(Utf8Test, RefusesNoOverlongFormAndNoSurrogate) {
    EXPECT_EQ(this->checked(bytesOf({0xC0, 0x80})), (DecodedCharacter{0, 2, {}}));
    EXPECT_EQ(this->checked(bytesOf({0xED, 0xA0, 0x80})), (DecodedCharacter{0xD800, 3, {}}));
    EXPECT_EQ(this->checked(bytesOf({0xF7, 0xBF, 0xBF, 0xBF})),
              (DecodedCharacter{0x1FFFFF, 4, {}}));
}

TYPED_TEST(Utf8Test, AgreesWithTheModelOnEveryLeadAndTrailByte) {
    for (int lead = 0; lead < 256; ++lead) {
        unsigned int const size = std::max(2U, sizeAnnouncedBy(static_cast<char>(lead)));
        for (unsigned int place = 1; place < size; ++place) {
            for (int trail = 0; trail < 256; ++trail) {
                std::string text(size, '\xA5');
                text[0] = static_cast<char>(lead);
                text[place] = static_cast<char>(trail);
                this->expectAgreement(text);
            }
        }
    }
}

TYPED_TEST(Utf8Test, AgreesWithTheModelWhereverTheDataEnds) {
    for (int lead = 0; lead < 256; ++lead) {
        for (unsigned int size = 0; size <= 7; ++size) {
            for (char const trail : {'\x80', '\xBF', '\x7F', '\xC0', '\0'}) {
                std::string text(size, trail);
                if (size != 0) {
                    text[0] = static_cast<char>(lead);
                }
                this->expectAgreement(text);
            }
        }
    }
}

TYPED_TEST(Utf8Test, DecodesWithoutAllocation) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted in this build";
    }
    AllocationCounter allocations;
    unsigned int byteCount = 0;
    for (EncodeRow const & row : ENCODE_ROWS) {
        char bytes[6];
        auto const size =
            static_cast<unsigned int>(TypeParam::utf8Encode(bytes, sizeof bytes, row.codePoint));
        EXPECT_EQ(TypeParam::nextUtf8Char(bytes, size, 0, &byteCount), row.codePoint);
        EXPECT_EQ(TypeParam::nextUtf8Char4(bytes, size, 0, &byteCount), row.codePoint);
    }
    EXPECT_EQ(allocations.count(), 0);
}

TYPED_TEST(Utf8Test, ErrorOwnsItsText) {
    using XParsingError = typename TypeParam::XParsingError;
    std::string text = "first";
    XParsingError error(text.c_str());
    XParsingError const copy(error);
    text = "gone!";
    EXPECT_STREQ(error.getErrorMessage(), "first");
    error.setErrorMessage("second");
    EXPECT_STREQ(error.getErrorMessage(), "second");
    EXPECT_STREQ(copy.getErrorMessage(), "first");
    error.setErrorMessage(error.getErrorMessage());
    EXPECT_STREQ(error.getErrorMessage(), "second");
}

TYPED_TEST(Utf8Test, ErrorStartsWithoutAText) {
    using XParsingError = typename TypeParam::XParsingError;
    XParsingError error;
    EXPECT_EQ(error.getErrorMessage(), nullptr);
    XParsingError const copy(error);
    EXPECT_EQ(copy.getErrorMessage(), nullptr);
    error.setErrorMessage("set");
    EXPECT_STREQ(error.getErrorMessage(), "set");
}

TYPED_TEST(Utf8Test, DeliberateShallowAssignmentOfErrors) {
    using XParsingError = typename TypeParam::XParsingError;
    XParsingError const source("shared");
    // Never destroyed: the text ends with one of the two.
    alignas(XParsingError) unsigned char room[sizeof(XParsingError)];
    auto * const target = new (room) XParsingError;
    *target = source;
    EXPECT_EQ(target->getErrorMessage(), source.getErrorMessage());
}

TEST(JsonUtilError, TakesTheNarrowString) {
    JsonUtil::XParsingError error(CString("from a string"));
    EXPECT_STREQ(error.getErrorMessage(), "from a string");
    error.setErrorMessage(CString("another"));
    EXPECT_STREQ(error.getErrorMessage(), "another");
    error.setErrorMessage(CString());
    EXPECT_STREQ(error.getErrorMessage(), "");
}

TEST(Utf8Errors, AreUnrelated) {
    EXPECT_FALSE((std::is_convertible_v<JsonUtil::XParsingError *, StringUtil::XParsingError *>));
    EXPECT_FALSE((std::is_convertible_v<StringUtil::XParsingError *, JsonUtil::XParsingError *>));
    EXPECT_FALSE((std::is_polymorphic_v<JsonUtil::XParsingError>));
    EXPECT_FALSE((std::is_polymorphic_v<StringUtil::XParsingError>));
}

// --- countUtf8Char ---

DecodedCharacter counted(std::string_view text) {
    ExactBuffer const data(text);
    try {
        unsigned int consumed = UNTOUCHED;
        unsigned int const count = StringUtil::countUtf8Char(data, data.length(), &consumed);
        return {static_cast<int>(count), consumed, {}};
    } catch (StringUtil::XParsingError const & error) {
        return {0, 0, error.getErrorMessage()};
    }
}

void expectCountAgrees(std::string const & text) {
    DecodedCharacter const wanted = referenceCount(text);
    DecodedCharacter const result = counted(text);
    EXPECT_EQ(result.codePoint, wanted.codePoint) << ::testing::PrintToString(text);
    EXPECT_EQ(result.size, wanted.size) << ::testing::PrintToString(text);
    EXPECT_EQ(result.failure, wanted.failure) << ::testing::PrintToString(text);
}

TEST(CountUtf8Char, CountsByLeadBytes) {
    struct Row {
        std::string text;
        unsigned int count;
    };
    Row const ROWS[] = {{"", 0},
                        {"a", 1},
                        {"abc", 3},
                        {bytesOf({0xC3, 0xA9}), 1},
                        {bytesOf({0xC3, 0x28}), 1},  // no trail byte is looked at
                        {bytesOf({0xE3, 0x81, 0x82, 0xE3, 0x81, 0x84}), 2},
                        {bytesOf({0xF0, 0x9F, 0x98, 0x80, 'x'}), 2},
                        {bytesOf({0xF8, 0x80, 0xA0, 0x80, 0x80}), 1},
                        {bytesOf({0xFD, 0, 0, 0, 0, 0, 0}), 2},
                        {"\0\0"s, 2}};
    for (Row const & row : ROWS) {
        ExactBuffer const data(row.text);
        unsigned int consumed = UNTOUCHED;
        EXPECT_EQ(StringUtil::countUtf8Char(data, data.length(), &consumed), row.count);
        EXPECT_EQ(consumed, data.length());
        EXPECT_EQ(StringUtil::countUtf8Char(data, data.length(), nullptr), row.count);
    }
}

TEST(CountUtf8Char, RefusesWithTheExactText) {
    EXPECT_EQ(counted("ab\x80"), (DecodedCharacter{0, 0, undecidedText(2)}));
    EXPECT_EQ(counted("\xFE"), (DecodedCharacter{0, 0, undecidedText(0)}));
    EXPECT_EQ(counted("a\xFF"), (DecodedCharacter{0, 0, undecidedText(1)}));
    EXPECT_EQ(counted("a\xC3"), (DecodedCharacter{0, 0, cutSequenceText(1, 2)}));
    EXPECT_EQ(counted("\xE3\x81"), (DecodedCharacter{0, 0, cutSequenceText(0, 3)}));
    EXPECT_EQ(counted("\xF0\x9F\x98"), (DecodedCharacter{0, 0, cutSequenceText(0, 4)}));
    EXPECT_EQ(counted("\xF8\x80\xA0\x80"), (DecodedCharacter{0, 0, cutSequenceText(0, 5)}));
    EXPECT_EQ(counted("\xFC\x80\xA0\x80\x80"), (DecodedCharacter{0, 0, cutSequenceText(0, 6)}));
}

TEST(CountUtf8Char, LeavesConsumedAloneOnFailure) {
    unsigned int consumed = UNTOUCHED;
    EXPECT_THROW(StringUtil::countUtf8Char("a\x80", 2, &consumed), StringUtil::XParsingError);
    EXPECT_EQ(consumed, UNTOUCHED);
}

// Texts longer than any block, with one byte out of line at every place.
TEST(CountUtf8Char, AgreesWithTheModelAroundASpecialByteAnywhere) {
    std::string const fills[] = {"a", bytesOf({0xC3, 0xA9}), bytesOf({0xE3, 0x81, 0x82}),
                                 bytesOf({0xF0, 0x9F, 0x98, 0x80}),
                                 bytesOf({'a', 0xE6, 0x97, 0xA5, 0xC2, 0xA5, 'b', 'c'})};
    for (std::string const & fill : fills) {
        for (std::size_t size = 0; size <= 200; size += size < 40 ? 1 : 13) {
            std::string text;
            while (text.size() < size) {
                text += fill;
            }
            text.resize(size);
            expectCountAgrees(text);
            for (std::size_t place = 0; place < size; ++place) {
                for (int const special :
                     {0x00, 0x41, 0x80, 0xBF, 0xC0, 0xE3, 0xF0, 0xF8, 0xFC, 0xFE}) {
                    std::string changed = text;
                    changed[place] = static_cast<char>(special);
                    expectCountAgrees(changed);
                }
            }
        }
    }
}

TEST(CountUtf8Char, AgreesWithTheModelOnRandomBytes) {
    constexpr char ALPHABET[] = "aaaa\x80\x81\xBF\xC3\xC3\xE3\xE3\xF0\xF7\xF8\xFC";
    std::mt19937 random(20241);
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 150, 'a');
        std::size_t at = 0;
        while (at < text.size()) {  // mostly well-formed, so that the walk comes far
            char const lead = ALPHABET[random() % (sizeof ALPHABET - 1)];
            text[at++] = lead;
            for (unsigned int i = 1; i < sizeAnnouncedBy(lead) && at < text.size(); ++i) {
                text[at++] =
                    random() % 40 == 0 ? ALPHABET[random() % (sizeof ALPHABET - 1)] : '\x9A';
            }
        }
        expectCountAgrees(text);
    }
}

// --- the reporting decoder ---

struct Reported {
    int result;
    unsigned int codePoint;
    std::string message;
};

bool operator==(Reported const & one, Reported const & other) {
    return one.result == other.result && one.codePoint == other.codePoint &&
           one.message == other.message;
}

void PrintTo(Reported const & reported, std::ostream * output) {
    *output << reported.result << " code point " << reported.codePoint << " \"" << reported.message
            << '"';
}

Reported reported(std::string_view text) {
    ExactBuffer const data(text);
    ErrorInfo error;
    error.setComponentCode(5);
    unsigned int codePoint = UNTOUCHED;
    int const result = StringUtil::nextUtf8Char(data, data.length(), &codePoint, &error);
    EXPECT_EQ(StringUtil::nextUtf8Char(data, data.length(), nullptr, &error), result);
    EXPECT_EQ(error.getComponentCode(), 5);
    EXPECT_EQ(error.hasError(), result == -1);
    if (result == -1) {
        EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_InvalidDataOfEncoding);
        EXPECT_EQ(error.getErrorCode(), 19);
        EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
        EXPECT_EQ(codePoint, UNTOUCHED);
    }
    std::string const message = error.getErrorMessage().GetString();
    constexpr std::string_view PREFIX = "invalid utf-8 character sequence: ";
    EXPECT_TRUE(message.empty() || message.starts_with(PREFIX));
    return {result, codePoint, message.empty() ? message : message.substr(PREFIX.size())};
}

constexpr char const * BELOW_2 = "number of bytes is too small( < 2)";
constexpr char const * BELOW_3 = "number of bytes is too small(<3)";
constexpr char const * BELOW_4 = "number of bytes is too small(<4)";
constexpr char const * BAD_1 = "byte 1 is invalid";
constexpr char const * BAD_2 = "byte 2 is invalid";
constexpr char const * BAD_0_OR_3 = "byte 0 or 3 is invalid";

struct ReportRow {
    std::initializer_list<int> bytes;
    Reported expected;
};

TEST(ReportingDecoder, GivesCharactersAndTheExactTexts) {
    ReportRow const ROWS[] = {
        {{}, {0, UNTOUCHED, ""}},
        {{0x00}, {1, 0, ""}},
        {{0x41, 0x80}, {1, 0x41, ""}},
        {{0x7F}, {1, 0x7F, ""}},
        {{0xC3, 0xA9}, {2, 0xE9, ""}},
        {{0xC0, 0x80}, {2, 0, ""}},
        {{0xE3, 0x81, 0x82}, {3, 0x3042, ""}},
        {{0xED, 0xA0, 0x80}, {3, 0xD800, ""}},
        {{0xF0, 0x9F, 0x98, 0x80}, {4, 0x1F600, ""}},
        {{0xF7, 0xBF, 0xBF, 0xBF, 0xBF}, {4, 0x1FFFFF, ""}},
        {{0xC3}, {-1, UNTOUCHED, BELOW_2}},
        {{0x80}, {-1, UNTOUCHED, BELOW_2}},
        {{0xFF}, {-1, UNTOUCHED, BELOW_2}},
        {{0xC3, 0x28}, {-1, UNTOUCHED, BAD_1}},
        {{0xFF, 0xFF}, {-1, UNTOUCHED, BAD_1}},
        {{0xE3, 0x81}, {-1, UNTOUCHED, BELOW_3}},
        {{0xF8, 0x80}, {-1, UNTOUCHED, BELOW_3}},
        {{0xE3, 0x81, 0x28}, {-1, UNTOUCHED, BAD_2}},
        {{0xF0, 0x9F, 0xC0}, {-1, UNTOUCHED, BAD_2}},
        {{0xF0, 0x9F, 0x98}, {-1, UNTOUCHED, BELOW_4}},
        {{0xFE, 0x80, 0x80}, {-1, UNTOUCHED, BELOW_4}},
        {{0xF0, 0x9F, 0x98, 0x28}, {-1, UNTOUCHED, BAD_0_OR_3}},
        {{0xF8, 0x80, 0x80, 0x80}, {-1, UNTOUCHED, BAD_0_OR_3}},
        {{0xFF, 0xBF, 0xBF, 0xBF}, {-1, UNTOUCHED, BAD_0_OR_3}},
        {{0xFC, 0x84, 0x80, 0x80, 0x80, 0x80}, {-1, UNTOUCHED, BAD_0_OR_3}},
    };
    for (ReportRow const & row : ROWS) {
        EXPECT_EQ(reported(bytesOf(row.bytes)), row.expected)
            << ::testing::PrintToString(bytesOf(row.bytes));
    }
}

TEST(ReportingDecoder, DeliberateStrayTrailByteLeadsTwoBytes) {
    EXPECT_EQ(reported(bytesOf({0x80, 0x80})), (Reported{2, 0, ""}));
    EXPECT_EQ(reported(bytesOf({0xBF, 0xBF})), (Reported{2, 0x7FF, ""}));
    EXPECT_EQ(reported(bytesOf({0x81, 0x41})), (Reported{-1, UNTOUCHED, BAD_1}));
}

TEST(ReportingDecoder, AgreesWithTheCheckingOneOnAllOrdinaryLeads) {
    for (int lead = 0xC0; lead < 0xF8; ++lead) {
        for (int trail = 0; trail < 256; ++trail) {
            for (unsigned int place = 1; place < 4; ++place) {
                std::string text(4, '\x91');
                text[0] = static_cast<char>(lead);
                text[place] = static_cast<char>(trail);
                DecodedCharacter const wanted = referenceDecode(text, 0, TrailBytes::TESTED);
                Reported const result = reported(text);
                EXPECT_EQ(result.result,
                          wanted.failure.empty() ? static_cast<int>(wanted.size) : -1);
                if (wanted.failure.empty()) {
                    EXPECT_EQ(result.codePoint, static_cast<unsigned int>(wanted.codePoint));
                }
            }
        }
    }
}

TEST(ReportingDecoder, TakesTheLengthOfATerminatedText) {
    ErrorInfo error;
    unsigned int codePoint = 0;
    EXPECT_EQ(StringUtil::nextUtf8Char("", &codePoint, &error), 0);
    EXPECT_EQ(StringUtil::nextUtf8Char("\xE3\x81\x82x", &codePoint, &error), 3);
    EXPECT_EQ(codePoint, 0x3042U);
    EXPECT_EQ(StringUtil::nextUtf8Char("\xE3\x81\x82", nullptr, &error), 3);
    EXPECT_FALSE(error.hasError());
    EXPECT_EQ(StringUtil::nextUtf8Char("\xE3\x81", &codePoint, &error), -1);
    EXPECT_EQ(error.getErrorMessage(),
              "invalid utf-8 character sequence: number of bytes is too small(<3)");
}

TEST(ReportingDecoder, NeedsNoErrorRecordForGoodData) {
    EXPECT_EQ(StringUtil::nextUtf8Char("A", 1U, nullptr, nullptr), 1);
    EXPECT_EQ(StringUtil::nextUtf8Char("\xC3\xA9", 2U, nullptr, nullptr), 2);
}

}  // namespace
