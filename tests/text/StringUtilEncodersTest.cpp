// The encoders of StringUtil: URL text, base64 and hexadecimal digits.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/ReferenceBase64.h"
#include "tests/support/ReferenceUrl.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/text/StringUtil.h"

namespace {

using namespace std::literals;
using namespace tvk::test;
using tvk::CString;
using tvk::ErrorInfo;
using tvk::KestrinConstants;
using tvk::StringUtil;

enum class Breaks { NONE, PLACED };

std::string stringOf(CString const & text) {
    return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

std::string urlEncoded(std::string_view bytes) {
    ExactBuffer const data(bytes);
    return stringOf(StringUtil::urlEncode(data, data.length()));
}

std::string urlDecoded(std::string_view text, ErrorInfo * error = nullptr) {
    ExactBuffer const data(text);
    return stringOf(StringUtil::urlDecode(data, data.length(), error));
}

std::string base64(std::string_view bytes, Breaks breaks = Breaks::NONE) {
    ExactBuffer const data(bytes);
    return stringOf(StringUtil::base64Encode(data.data(), data.length(), breaks == Breaks::PLACED));
}

std::string base64Url(std::string_view bytes) {
    ExactBuffer const data(bytes);
    return stringOf(StringUtil::base64UrlEncode(data.data(), data.length()));
}

std::string hexString(std::string_view bytes) {
    ExactBuffer const data(bytes);
    return stringOf(StringUtil::toHexString(data.data(), data.length()));
}

std::string everyByte() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

std::string randomBytes(std::mt19937 & random, std::size_t size) {
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    return bytes;
}

struct Row {
    std::string_view bytes;
    std::string_view text;
};

// ---- urlEncode -------------------------------------------------------------------------------

constexpr Row URL_ENCODE_ROWS[] = {
    {"", ""},
    {"a b", "a+b"},
    {"a/b", "a%2Fb"},
    {"~-_.", "~-_."},
    {"AYazY09", "AYazY09"},
    {"+", "%2B"},
    {"%", "%25"},
    {"a=1&b=2?", "a%3D1%26b%3D2%3F"},
    {"\r\n\t", "%0D%0A%09"},
    {"a\0b"sv, "a%00b"},
    {"\x7F", "%7F"},
    {"@[`{", "%40%5B%60%7B"},
};

TEST(UrlEncode, CopiesOrEscapes) {
    for (Row const & row : URL_ENCODE_ROWS) {
        EXPECT_EQ(urlEncoded(row.bytes), row.text);
    }
}

TEST(UrlEncode, DeliberateEscapeOfTheCapitalZ) {
    EXPECT_EQ(urlEncoded("AZ"), "A%5A");
    EXPECT_EQ(urlEncoded("YZz"), "Y%5Az");
}

TEST(UrlEncode, DeliberateFirstDigitsOfHighBytes) {
    constexpr Row ROWS[] = {
        {"\x80", "%(0"}, {"\x8F", "%(F"}, {"\x90", "%)0"}, {"\xA5", "%*5"}, {"\xBA", "%+A"},
        {"\xC0", "%,0"}, {"\xDD", "%-D"}, {"\xE3", "%.3"}, {"\xF0", "%/0"}, {"\xFF", "%/F"},
    };
    for (Row const & row : ROWS) {
        EXPECT_EQ(urlEncoded(row.bytes), row.text);
    }
    EXPECT_EQ(urlEncoded("\xE3\x81\x82"), "%.3%(1%(2");
}

TEST(UrlEncode, AgreesWithTheModelOnEveryByte) {
    for (char const byte : everyByte()) {
        std::string const bytes(1, byte);
        EXPECT_EQ(urlEncoded(bytes), referenceUrlEncode(bytes));
    }
    EXPECT_EQ(urlEncoded(everyByte()), referenceUrlEncode(everyByte()));
}

TEST(UrlEncode, AgreesWithTheModelOnRandomBytes) {
    std::mt19937 random(931);
    for (std::size_t size = 0; size < 300; ++size) {
        std::string const bytes = randomBytes(random, size);
        ASSERT_EQ(urlEncoded(bytes), referenceUrlEncode(bytes)) << ::testing::PrintToString(bytes);
    }
}

// ---- urlDecode -------------------------------------------------------------------------------

constexpr char OTHER_DOMAIN[] = "domain of the caller";
constexpr int OTHER_CODE = 4711;

/// A record that tells what a call leaves alone.
ErrorInfo usedError() { return {3, OTHER_DOMAIN, OTHER_CODE, "text of the caller", nullptr}; }

void expectUntouched(ErrorInfo const & error) {
    EXPECT_EQ(error.getComponentCode(), 3);
    EXPECT_EQ(error.getDomain(), OTHER_DOMAIN);
    EXPECT_EQ(error.getErrorCode(), OTHER_CODE);
    EXPECT_EQ(error.getErrorMessage(), "text of the caller");
}

void expectFailure(ErrorInfo const & error, UrlFailure const & failure) {
    EXPECT_EQ(error.getComponentCode(), 3);
    EXPECT_EQ(error.getDomain(),
              failure.isCut ? CString(OTHER_DOMAIN) : KestrinConstants::ErrorDomain_Kestrin);
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_InvalidDataOfEncoding);
    EXPECT_EQ(stringOf(error.getErrorMessage()), failure.message());
    EXPECT_EQ(error.getCause(), nullptr);
}

/// Decodes with and without a record and requires what the model gives.
void expectAgreementOnDecoding(std::string const & text) {
    SCOPED_TRACE(::testing::PrintToString(text));
    DecodedUrl const expected = referenceUrlDecode(text);
    ErrorInfo error = usedError();
    EXPECT_EQ(urlDecoded(text, &error), expected.bytes);
    EXPECT_EQ(urlDecoded(text), expected.bytes);
    if (expected.failure) {
        expectFailure(error, *expected.failure);
    } else {
        expectUntouched(error);
    }
}

constexpr Row URL_DECODE_ROWS[] = {
    {"", ""},
    {" ", "+"},
    {"a bAc", "a+b%41c"},
    {"A", "%41"},
    {"JJ", "%4a%4A"},
    {"/", "%2F"},
    {"%41", "%2541"},
    {"+", "%2B"},
    {"Z", "%5A"},
    {"a\0b"sv, "a%00b"},
    {"a\0b"sv, "a\0b"sv},
    {"\xE3\x81\x82\xFF", "%e3%81%82%FF"},
    {"\xE3\x81\x82", "\xE3\x81\x82"},
    {"a/?&=#\r\n", "a/?&=#\r\n"},
};

TEST(UrlDecode, GivesTheBytesBack) {
    for (Row const & row : URL_DECODE_ROWS) {
        ErrorInfo error = usedError();
        EXPECT_EQ(urlDecoded(row.text, &error), row.bytes);
        expectUntouched(error);
        EXPECT_EQ(urlDecoded(row.text), row.bytes);
    }
}

struct FailureRow {
    std::string_view text;
    std::string_view bytes;
    UrlFailure failure;
};

constexpr FailureRow URL_FAILURE_ROWS[] = {
    // Too few bytes behind the '%', whatever they are.
    {"%", "", {true, 0}},
    {"%4", "", {true, 0}},
    {"%*", "", {true, 0}},
    {"%%", "", {true, 0}},
    {"abc%4", "abc", {true, 3}},
    {"a+b%", "a b", {true, 3}},
    {"%41%42%4", "AB", {true, 6}},
    // A bad digit in either place.
    {"ab%*1x", "ab", {false, 2}},
    {"ab%1*x", "ab", {false, 2}},
    {"%41%%41", "A", {false, 3}},
    {"%4+", "", {false, 0}},
    {"% 1", "", {false, 0}},
    {"%1\0"sv, "", {false, 0}},
    {"%\0"
     "1"sv,
     "",
     {false, 0}},
    {"a%-1b%", "a", {false, 1}},
    {"a%4\xE3%", "a", {false, 1}},
    {"%(0", "", {false, 0}},
};

TEST(UrlDecode, GivesWhatStandsBeforeAFailureAndReportsIt) {
    for (FailureRow const & row : URL_FAILURE_ROWS) {
        SCOPED_TRACE(::testing::PrintToString(row.text));
        ErrorInfo error = usedError();
        EXPECT_EQ(urlDecoded(row.text, &error), row.bytes);
        expectFailure(error, row.failure);
        EXPECT_EQ(urlDecoded(row.text), row.bytes);
    }
}

TEST(UrlDecode, ReportsWithTheExactText) {
    ErrorInfo error;
    urlDecoded("ab%*1x", &error);
    EXPECT_EQ(error.getErrorMessage(), "invalid text for URL encoding, near position 2");
    EXPECT_EQ(error.getErrorCode(), 19);
    urlDecoded("abc%4", &error);
    EXPECT_EQ(error.getErrorMessage(),
              "invalid text for URL encoding(too few bytes), near position 3");
    EXPECT_EQ(error.getErrorCode(), 19);
}

TEST(UrlDecode, DeliberateDomainOfTheBadDigitAlone) {
    ErrorInfo error;
    urlDecoded("%4", &error);
    EXPECT_TRUE(error.hasError());
    EXPECT_EQ(error.getDomain(), ErrorInfo::ErrorDomain_System);  // that of a fresh record
    urlDecoded("%4*", &error);
    EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
    urlDecoded("%4", &error);
    EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
}

TEST(UrlDecode, DeliberateLettersBehindF) {
    EXPECT_EQ(urlDecoded("%zz"), "\x53");
    EXPECT_EQ(urlDecoded("%ZZ"), "\x53");
    EXPECT_EQ(urlDecoded("%g0"), "\0"sv);
    EXPECT_EQ(urlDecoded("%0g"), "\x10");
    EXPECT_EQ(urlDecoded("%fg"), "\0"sv);
}

TEST(UrlDecode, AgreesWithTheModelOnEveryPairOfBytes) {
    std::string const bytes = everyByte();
    int accepted = 0;
    for (char const first : bytes) {
        for (char const second : bytes) {
            std::string const text = {'x', '%', first, second, 'y'};
            ErrorInfo error;
            std::string const decoded = urlDecoded(text, &error);
            bool const isGood = isUrlDigit(first) && isUrlDigit(second);
            std::string const expected =
                isGood ? std::string{'x', valueOfUrlDigits(first, second), 'y'} : "x";
            ASSERT_EQ(decoded, expected) << ::testing::PrintToString(text);
            ASSERT_EQ(error.hasError(), !isGood) << ::testing::PrintToString(text);
            accepted += isGood ? 1 : 0;
        }
    }
    EXPECT_EQ(accepted, 62 * 62);
}

TEST(UrlDecode, AgreesWithTheModelOnRandomText) {
    constexpr std::string_view PIECES[] = {"%", "+", "%4", "%41", "%zZ",  "%e3",
                                           "a", "*", "~",  " ",   "\0"sv, "\x80"};
    std::mt19937 random(932);
    for (int round = 0; round < 5000; ++round) {
        std::string text;
        for (std::size_t pieces = random() % 12; pieces > 0; --pieces) {
            text += PIECES[random() % std::size(PIECES)];
        }
        expectAgreementOnDecoding(text);
    }
}

TEST(UrlDecode, TakesBackWhatWasEncodedFromAscii) {
    std::mt19937 random(933);
    std::string const ascii = everyByte().substr(0, 0x80);
    EXPECT_EQ(urlDecoded(urlEncoded(ascii)), ascii);
    for (std::size_t size = 0; size < 300; ++size) {
        std::string bytes = randomBytes(random, size);
        for (char & byte : bytes) {
            byte = static_cast<char>(byte & 0x7F);
        }
        ErrorInfo error;
        ASSERT_EQ(urlDecoded(urlEncoded(bytes), &error), bytes);
        ASSERT_FALSE(error.hasError());
    }
}

TEST(UrlDecode, DeliberateRefusalOfWhatWasEncodedFromHighBytes) {
    for (char const byte : everyByte().substr(0x80)) {
        ErrorInfo error;
        EXPECT_EQ(urlDecoded(urlEncoded("ab "s + byte + "c"), &error), "ab ");
        EXPECT_EQ(error.getErrorMessage(), "invalid text for URL encoding, near position 3");
    }
}

// ---- base64Encode and base64UrlEncode --------------------------------------------------------

std::string withBreaks(std::string text) {
    for (std::size_t at = 76; at < text.size(); at += 76) {
        text.insert(at, "\r\n");
    }
    return text;
}

void expectBase64OfTheModel(std::string const & bytes) {
    std::string const standard = referenceBase64(bytes, "+/");
    ASSERT_EQ(base64(bytes), standard);
    ASSERT_EQ(base64(bytes, Breaks::PLACED), withBreaks(standard));
    ASSERT_EQ(base64Url(bytes), referenceBase64(bytes, "-_"));
}

// RFC 4648, section 10.
constexpr Row RFC_4648_ROWS[] = {
    {"", ""},
    {"f", "Zg=="},
    {"fo", "Zm8="},
    {"foo", "Zm9v"},
    {"foob", "Zm9vYg=="},
    {"fooba", "Zm9vYmE="},
    {"foobar", "Zm9vYmFy"},
};

TEST(Base64Encode, GivesTheTestVectorsOfRfc4648) {
    for (Row const & row : RFC_4648_ROWS) {
        EXPECT_EQ(base64(row.bytes), row.text);
        EXPECT_EQ(base64(row.bytes, Breaks::PLACED), row.text);
        EXPECT_EQ(base64Url(row.bytes), row.text);
    }
}

TEST(Base64Encode, PadsTheLastGroup) {
    EXPECT_EQ(base64("Man"), "TWFu");
    EXPECT_EQ(base64("Ma"), "TWE=");
    EXPECT_EQ(base64("M"), "TQ==");
    EXPECT_EQ(base64("\0"sv), "AA==");
    EXPECT_EQ(base64("\0\0"sv), "AAA=");
    EXPECT_EQ(base64("\0\0\0"sv), "AAAA");
}

TEST(Base64Encode, TakesHighBytesWithoutSign) {
    EXPECT_EQ(base64("\x80"), "gA==");
    EXPECT_EQ(base64("\x80\x80"), "gIA=");
    EXPECT_EQ(base64("\x80\x80\x80"), "gICA");
    EXPECT_EQ(base64("\xFF\xFF\xFF"), "////");
    EXPECT_EQ(base64("\xFB\xEF\xBE"), "++++");
    EXPECT_EQ(base64("\xE3\x81\x82"), "44GC");
    EXPECT_EQ(base64("\xFF"), "/w==");
}

TEST(Base64UrlEncode, HasTwoCharactersOfItsOwnAndPads) {
    EXPECT_EQ(base64Url("???"), "Pz8_");
    EXPECT_EQ(base64Url(">>"), "Pj4=");
    EXPECT_EQ(base64Url("\xFB\xEF\xBE"), "----");
    EXPECT_EQ(base64Url("\xFF\xFF\xFF"), "____");
    EXPECT_EQ(base64Url("\xFF"), "_w==");
}

TEST(Base64UrlEncode, PlacesNoBreaks) {
    EXPECT_EQ(base64Url(std::string(300, '\0')), std::string(400, 'A'));
}

TEST(Base64Encode, AgreesWithTheModelOnEveryFirstByteOfEveryGroup) {
    for (char const byte : everyByte()) {
        expectBase64OfTheModel(std::string{byte});
        expectBase64OfTheModel({byte, 'a'});
        expectBase64OfTheModel({byte, 'a', 'b'});
        expectBase64OfTheModel({'a', byte, '\xFF'});
        expectBase64OfTheModel({'a', 'b', byte});
        expectBase64OfTheModel({'a', 'b', 'c', byte});
    }
}

TEST(Base64Encode, AgreesWithTheModelOnRandomBytesOfEveryLength) {
    std::mt19937 random(934);
    for (std::size_t size = 0; size <= 300; ++size) {
        expectBase64OfTheModel(randomBytes(random, size));
    }
    expectBase64OfTheModel(randomBytes(random, 10000));
}

struct LinesRow {
    std::size_t size;
    std::vector<std::size_t> lines;
};

TEST(Base64Encode, DeliberateShorterLinesBehindTheFirst) {
    LinesRow const rows[] = {
        {54, {72}},
        {57, {76}},  // just full: no break
        {58, {76, 4}},
        {60, {76, 4}},
        {111, {76, 72}},
        {112, {76, 74, 2}},  // a break inside the last group
        {120, {76, 74, 10}},
        {165, {76, 74, 70}},
        {168, {76, 74, 74}},  // 224 characters end with a full line: no break behind it
        {171, {76, 74, 74, 4}},
        {279, {76, 74, 74, 74, 74}},  // 372 again
        {280, {76, 74, 74, 74, 74, 4}},
    };
    for (LinesRow const & row : rows) {
        std::string expected;
        for (std::size_t const length : row.lines) {
            expected += (expected.empty() ? "" : "\r\n") + std::string(length, 'A');
        }
        std::string text = base64(std::string(row.size, '\0'), Breaks::PLACED);
        std::replace(text.begin(), text.end(), '=', 'A');
        EXPECT_EQ(text, expected) << row.size;
    }
}

// ---- toHexString -----------------------------------------------------------------------------

TEST(ToHexString, GivesTwoCapitalDigitsAByte) {
    EXPECT_EQ(hexString(""), "");
    EXPECT_EQ(hexString("\x00\xAB"sv), "00AB");
    EXPECT_EQ(hexString("\x0F\xF0\x7F\x80\xFF"), "0FF07F80FF");
}

TEST(ToHexString, GivesEveryByte) {
    std::string expected;
    for (char const high : "0123456789ABCDEF"sv) {
        for (char const low : "0123456789ABCDEF"sv) {
            expected += {high, low};
        }
    }
    EXPECT_EQ(hexString(everyByte()), expected);
}

// ---- All encoders ----------------------------------------------------------------------------

struct Encoder {
    char const * name;
    std::function<CString(char const * data, unsigned int size)> encode;
    unsigned int tooLarge;  // the smallest size whose longest result no CString holds
};

Encoder const ENCODERS[] = {
    {"urlEncode", StringUtil::urlEncode, 0x2AAAAAAB},
    {"urlDecode",
     [](char const * data, unsigned int size) {
         return StringUtil::urlDecode(data, size, nullptr);
     },
     0x80000000},
    {"base64Encode",
     [](char const * data, unsigned int size) {
         return StringUtil::base64Encode(data, size, false);
     },
     0x5FFFFFFE},
    {"base64Encode with breaks",
     [](char const * data, unsigned int size) {
         return StringUtil::base64Encode(data, size, true);
     },
     0x5D79435F},
    {"base64UrlEncode", StringUtil::base64UrlEncode, 0x5FFFFFFE},
    {"toHexString", StringUtil::toHexString, 0x40000000},
};

TEST(Encoders, TakeNullWithoutBytes) {
    for (Encoder const & encoder : ENCODERS) {
        SCOPED_TRACE(encoder.name);
        EXPECT_EQ(encoder.encode(nullptr, 0), "");
    }
}

TEST(Encoders, AllocateOnce) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    std::string const inputs[] = {"a", "%41+", everyByte(), std::string(5000, 'x')};
    for (Encoder const & encoder : ENCODERS) {
        SCOPED_TRACE(encoder.name);
        for (std::string const & input : inputs) {
            AllocationCounter const allocations;
            encoder.encode(input.data(), static_cast<unsigned int>(input.size()));
            EXPECT_EQ(allocations.count(), 1);
        }
        AllocationCounter const allocations;
        encoder.encode(nullptr, 0);
        EXPECT_EQ(allocations.count(), 0);
    }
}

bool refuses(Encoder const & encoder, char const * data, unsigned int size) {
    try {
        encoder.encode(data, size);
        return false;
    } catch (std::bad_alloc const &) {
        return true;
    }
}

TEST(Encoders, PassOnThatMemoryIsOut) {
    if (!AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail here";
    }
    for (Encoder const & encoder : ENCODERS) {
        AllocationFailure failure;
        bool const refused = refuses(encoder, "abc", 3);
        failure.end();
        EXPECT_TRUE(refused) << encoder.name;
    }
}

TEST(Encoders, RefuseWhatNoTextHoldsBeforeTheyReadAByte) {
    ExactBuffer const data("");
    for (Encoder const & encoder : ENCODERS) {
        SCOPED_TRACE(encoder.name);
        for (unsigned int const size : {encoder.tooLarge, encoder.tooLarge + 1, 0x80000000U,
                                        0xAAAAAAABU, 0xFFFFFFFEU, 0xFFFFFFFFU}) {
            EXPECT_TRUE(refuses(encoder, data, size)) << size;
        }
    }
}

}  // namespace
