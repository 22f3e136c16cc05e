// Each kind of byte on each side of the borders of blocks and windows: every variant that this
// processor can run against the model.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/json/ScannerCodes.h"
#include "tests/support/EventRecorder.h"
#include "tests/support/ReferenceScanner.h"
#include "tvk/json/JsonOptions.h"
#include "tvk/json/detail/Scan.h"

namespace {

using namespace std::literals;
using namespace tvk::test;
namespace detail = tvk::detail;

constexpr int STRICT = 0;
constexpr int TRAILING_COMMA = tvk::JSON_ALLOW_TRAILING_COMMA;

void expectAgreement(std::string_view input, int options, ScanMode mode = ScanMode::VALUE) {
    ScanOutcome const expected = ReferenceScanner::scan(mode, input, options);
    for (detail::ScanVariant const * const variant : scanVariants()) {
        ASSERT_EQ(scanBy(*variant, mode, input, options), expected)
            << variant->name << " with options " << options << ": "
            << ::testing::PrintToString(input);
    }
}

/// What a scanner by blocks may get wrong, by the neighbours that it has.
constexpr std::string_view PIECES[] = {
    "\"", "\\", "\\\\", "\\\"", "\\\\\"", "\\\\\\\"", "\\n", "\\u0041", "\\u00e9\\\\",
    "\\ud83d\\ude00", "\\x", "\\u12g4", "\0"sv, "\x1F", "\b", "\v", "\f", "\x1A", "\x7F", " ", "\n",
    "{", "}", "[", "]", ",", ":", ",,", "::", ", ,", " ,", " :", "\",\"", "\":\"",
    "\":", "\" :1,\"", "0", "-", "12", "1.5", "-0.25", "1e5", "1.", "01", "true", "false", "null",
    "nul", "truex", "#", "//", "/", "\xC3\xA9", "\xE3\x83\x88", "\xF0\x9F\x93\x88", "\xED\xA0\x80",
    "\xE0\xA4\x95", "\xF4\x90\x80\x80",
    // Not the shape of UTF-8, or longer than needed.
    "\x80", "\xC3", "\xE3\x83", "\xF0\x9F\x93", "\xC3\"", "\xE3\"x", "\xC0\xA2", "\xC1\x9C",
    "\xC1\x9C\"", "\xE0\x80\xA2", "\xE0\x81\x9C", "\xF0\x80\x80\xA2", "\xF8\x88\x80\x80\x80",
    "\xFC\x84\x80\x80\x80\x80", "\xFE", "\xFF", "\xE3\x83\x88\x80", "\xC3\xA9\xA9"};

std::vector<std::string> pieces() {
    std::vector<std::string> all(std::begin(PIECES), std::end(PIECES));
    for (int byte = 0; byte < 256; ++byte) {
        all.emplace_back(1, static_cast<char>(byte));
    }
    return all;
}

constexpr std::size_t OFFSETS = 132;  // two blocks of 64 bytes, and some

constexpr std::string_view REST =
    R"(,"n":12,"f":-0.5,"a":[1, 2 ,{"b":null}],"t":true , "z":"text"})";

TEST(JsonScannerBlocks, ReadAStringWithEachByteAtEachOffset) {
    for (std::string const & piece : pieces()) {
        for (std::size_t offset = 0; offset < OFFSETS; ++offset) {
            std::string const text = R"({"k":")" + std::string(offset, 'x') + piece + "y\"";
            ASSERT_NO_FATAL_FAILURE(expectAgreement(text + std::string(REST), STRICT));
        }
    }
}

TEST(JsonScannerBlocks, ReadANameWithEachByteAtEachOffset) {
    for (std::string_view const piece : PIECES) {
        for (std::size_t offset = 0; offset < OFFSETS; ++offset) {
            std::string const text =
                R"({")" + std::string(offset, 'x') + std::string(piece) + R"(y":1)";
            ASSERT_NO_FATAL_FAILURE(expectAgreement(text + std::string(REST), STRICT));
        }
    }
}

TEST(JsonScannerBlocks, ReadAnArrayWithEachByteAtEachOffset) {
    constexpr std::string_view FILLINGS[] = {" ", "1,"};
    for (std::string_view const piece : PIECES) {
        for (std::size_t offset = 0; offset < OFFSETS; ++offset) {
            for (std::string_view const filling : FILLINGS) {
                std::string text = "[";
                while (text.size() < offset) {
                    text += filling;
                }
                text += std::string(piece) + R"(,2,"abc",{"d":[],"e":{}} ,)" +
                        std::string(70, ' ') + "3]";
                ASSERT_NO_FATAL_FAILURE(expectAgreement(text, STRICT));
                ASSERT_NO_FATAL_FAILURE(expectAgreement(text, TRAILING_COMMA));
            }
        }
    }
}

TEST(JsonScannerBlocks, ReadAnObjectWithEachByteBehindEachToken) {
    constexpr std::size_t PADDINGS[] = {0, 30, 60};
    constexpr std::string_view TOKENS[] = {
        "{", R"("name")", ":",    R"("value")", ",", R"("b")", ":", "-12", ",", R"("c")",
        ":", "[",         "null", "]",          ",", R"("d")", ":", "{",   "}", "}"};
    for (std::string_view const piece : PIECES) {
        for (std::size_t place = 0; place < std::size(TOKENS); ++place) {
            std::string text;
            for (std::size_t i = 0; i < std::size(TOKENS); ++i) {
                text += TOKENS[i];
                text += i == place ? piece : ""sv;
            }
            for (std::size_t const padding : PADDINGS) {
                std::string const padded =
                    "[" + std::string(padding, ' ') + text + std::string(64, ' ') + "]";
                ASSERT_NO_FATAL_FAILURE(expectAgreement(padded, STRICT));
                ASSERT_NO_FATAL_FAILURE(expectAgreement(padded, TRAILING_COMMA));
            }
        }
    }
}

/// `size` bytes of an object's inside, whose last value is a text.
std::string fields(std::size_t size) {
    std::string text;
    for (int i = 0; text.size() + 20 < size; ++i) {
        text += "\"n" + std::to_string(i) + "\":" + std::to_string(i * 37) + ",";
    }
    text += "\"t\":\"";
    return text + std::string(size - 1 - std::min(size - 1, text.size()), 'x') + '"';
}

TEST(JsonScannerBlocks, ReadEachPieceAroundTheBorderOfAWindow) {
    for (std::string_view const piece : PIECES) {
        for (std::size_t offset = 1015; offset < 1035; ++offset) {
            std::string const inside = "{" + fields(offset - 1);
            std::string const string =
                inside.substr(0, inside.size() - 1) + std::string(piece) + "\"";
            ASSERT_NO_FATAL_FAILURE(
                expectAgreement(inside + std::string(piece) + std::string(REST), STRICT));
            ASSERT_NO_FATAL_FAILURE(expectAgreement(string + std::string(REST), STRICT));
        }
    }
}

TEST(JsonScannerBlocks, ReadStringsOfManyWindows) {
    constexpr std::size_t SIZES[] = {900, 1024, 2047, 2048, 5000};
    for (std::size_t const size : SIZES) {
        std::string const plain(size, 'x');
        for (std::string const & text :
             {plain, plain + R"(\n)" + plain, R"(\")" + plain, plain + "\xE3\x83\x88" + plain,
              plain + "\xC3\"" + plain}) {
            ASSERT_NO_FATAL_FAILURE(
                expectAgreement("{\"k\":\"" + text + "\"" + std::string(REST), STRICT));
            ASSERT_NO_FATAL_FAILURE(
                expectAgreement("{\"" + text + "\":1" + std::string(REST), STRICT));
        }
    }
}

TEST(JsonScannerBlocks, ReadOnlyBracketsForManyWindows) {
    std::string const deep = std::string(1500, '[') + std::string(1500, ']');
    std::string wide = "[[]";
    for (int i = 0; i < 1000; ++i) {
        wide += i % 3 == 0 ? ",{}" : ",[]";
    }
    ASSERT_NO_FATAL_FAILURE(expectAgreement(deep, STRICT));
    ASSERT_NO_FATAL_FAILURE(expectAgreement(wide + "]", STRICT));
    ASSERT_NO_FATAL_FAILURE(expectAgreement(wide + "}", STRICT));
}

TEST(JsonScannerBlocks, ReadADocumentCutAtEachByte) {
    std::string const document =
        R"({"type":"quote","sym":"4346","name":")"
        "\xE8\xA5\xBF\xE9\x83\xBD"
        R"(","seq":100001,)"
        R"("last":170.25,"chg":-37,"halted":false,"note":null,"esc":"a\n\u0041","ask":[[1,2],[3.5,4]],)"
        R"("list":[ "a" , "b" ],"empty":{},"deep":{"x":{"y":[true]}},"sum":1234567890123456789.5})";
    for (std::size_t size = 0; size <= document.size(); ++size) {
        std::string const cut = document.substr(0, size);
        ASSERT_NO_FATAL_FAILURE(expectAgreement(cut, STRICT));
        ASSERT_NO_FATAL_FAILURE(expectAgreement(cut, STRICT, ScanMode::OBJECT));
        ASSERT_NO_FATAL_FAILURE(
            expectAgreement(cut.substr(std::min<std::size_t>(size, 1)), STRICT, ScanMode::FIELDS));
    }
}

TEST(JsonScannerBlocks, ReadNumbersOfEachLength) {
    for (std::size_t digits = 1; digits < 70; ++digits) {
        for (std::size_t fraction = 0; fraction < 40; ++fraction) {
            for (std::string_view const sign : {"", "-"}) {
                std::string number = std::string(sign) + std::string(digits, '7');
                number += fraction > 0 ? "." + std::string(fraction, '3') : "";
                std::string const exponent = fraction % 5 == 0 ? "e-1" : "";
                ASSERT_NO_FATAL_FAILURE(expectAgreement("[" + number + exponent + "," + number +
                                                            "\n," + number + "]" +
                                                            std::string(digits, ' '),
                                                        STRICT));
            }
        }
    }
}

TEST(JsonScannerBlocks, ReadDamagedDocumentsOfManyWindows) {
    std::mt19937 engine(20257);
    auto const below = [&](std::size_t count) { return engine() % count; };
    std::string document = "[";
    while (document.size() < 4000) {
        document += R"({"sym":"7203.T","name":")"
                    "\xE3\x83\x88\xE3\x83\xA8"
                    R"(","p":[1.5,-2, 3 ],"esc":"\/a\"b\\",)"
                    R"( "ok":true,"none":null },)"
                    "\n  ";
    }
    document += "0]";
    for (int round = 0; round < 1500; ++round) {
        std::string damaged = document;
        for (std::size_t count = below(3); count > 0; --count) {
            std::size_t const place = below(damaged.size());
            std::string_view const piece = PIECES[below(std::size(PIECES))];
            if (below(2) == 0) {
                damaged.replace(place, below(3), piece);
            } else {
                damaged[place] = static_cast<char>(below(256));
            }
        }
        int const options = static_cast<int>(below(4) == 0 ? below(32) : below(2) * TRAILING_COMMA);
        ASSERT_NO_FATAL_FAILURE(expectAgreement(damaged, options));
    }
}

}  // namespace
