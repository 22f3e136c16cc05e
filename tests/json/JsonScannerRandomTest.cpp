// Random documents, whole and damaged, against the model: through the library's own choice of code
// and through each code that this processor can run.

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

#include "tests/json/ScannerCodes.h"
#include "tests/support/EventRecorder.h"
#include "tests/support/LibraryScan.h"
#include "tests/support/ReferenceScanner.h"
#include "tvk/json/detail/Scan.h"

namespace {

using namespace std::literals;
using namespace tvk::test;
namespace detail = tvk::detail;

#ifdef NDEBUG
constexpr int ROUNDS = 60'000;
#else
constexpr int ROUNDS = 20'000;  // with assertions or sanitizers a round takes many times as long
#endif

constexpr int EVERY_OPTION = 31;

void expectAgreement(ScanMode mode, std::string_view input, int options) {
    ScanOutcome const expected = ReferenceScanner::scan(mode, input, options);
    auto const describeInput = [&] {
        return ::testing::PrintToString(input) + " by entry " +
               std::to_string(static_cast<int>(mode)) + " with options " + std::to_string(options);
    };
    ASSERT_EQ(scanWithLibrary(mode, input, options), expected) << describeInput();
    for (detail::ScanVariant const * const variant : scanVariants()) {
        ASSERT_EQ(scanBy(*variant, mode, input, options), expected)
            << variant->name << ": " << describeInput();
    }
}

class Dice {
public:
    explicit Dice(unsigned int seed) : random_(seed) {}

    /// 0 to count - 1.
    std::size_t below(std::size_t count) { return random_() % count; }
    bool oneIn(std::size_t count) { return below(count) == 0; }

    template <class Range>
    auto const & oneOf(Range const & range) {
        return range[below(std::size(range))];
    }

    ScanMode mode() {
        constexpr ScanMode MODES[] = {ScanMode::VALUE, ScanMode::OBJECT, ScanMode::ARRAY,
                                      ScanMode::FIELDS};
        return oneIn(2) ? ScanMode::VALUE : oneOf(MODES);
    }
    int options() { return static_cast<int>(below(EVERY_OPTION + 1)); }

private:
    std::mt19937 random_;
};

// --- whole documents ---

constexpr std::string_view TEXTS[] = {
    "7203.T",
    "USDJPY",
    "2024-11-21T09:00:00.123",
    "\xE3\x83\x88\xE3\x83\xA8\xE3\x82\xBF\xE8\x87\xAA\xE5\x8B\x95\xE8\xBB\x8A",
    "\xE6\x97\xA5\xE7\xB5\x8C\xE5\xB9\xB3\xE5\x9D\x87 \xE5\x85\x88\xE7\x89\xA9 12\xE6\x9C\x88",
    "\xEF\xBD\xB6\xEF\xBE\x9F",
    "\xF0\x9F\x93\x88 up",
    "\xF8\x80\xA0\x80\x80",
    R"(said \"buy\" at \u00a5100\n)",
    R"(\ud83d\ude00\ud840\udc0b)",
    R"(C:\\log\/a)",
    "a line of plain text that is longer than any block of the scanner",
    "",
};

constexpr std::string_view SPACES[] = {"", "", "", "", " ", "\n", "\t ", "          ", "\b\f\r"};

std::string number(Dice & dice) {
    constexpr std::string_view FRACTIONS[] = {"", "", ".5", ".25", ".0000123456789012"};
    constexpr std::string_view EXPONENTS[] = {"", "", "", "e5", "E-07", "e+123456"};
    std::string text = dice.oneIn(4) ? "-" : "";
    text += dice.oneIn(5) ? "0" : std::to_string(1 + dice.below(100'000'000));
    text += dice.oneOf(FRACTIONS);
    text += dice.oneOf(EXPONENTS);
    return text;
}

std::string inQuotes(Dice & dice) { return '"' + std::string(dice.oneOf(TEXTS)) + '"'; }

std::string value(Dice & dice, int depth);

std::string members(Dice & dice, int depth, bool named) {
    std::string text;
    for (std::size_t left = dice.below(5); left > 0; --left) {
        text += dice.oneOf(SPACES);
        text += named ? inQuotes(dice) + ':' : "";
        text += dice.oneOf(SPACES);
        text += value(dice, depth - 1);
        text += left > 1 ? "," : "";
    }
    return text;
}

std::string value(Dice & dice, int depth) {
    constexpr std::string_view WORDS[] = {"true", "false", "null"};
    switch (dice.below(depth > 0 ? 7 : 5)) {
        case 0:
        case 1:
            return inQuotes(dice);
        case 2:
        case 3:
            return number(dice);
        case 4:
            return std::string(dice.oneOf(WORDS));
        case 5:
            return '{' + members(dice, depth, true) + '}';
        default:
            return '[' + members(dice, depth, false) + ']';
    }
}

/// A line as a price feed sends it.
std::string tradingMessage(Dice & dice) {
    std::string line = R"({"seq":)" + std::to_string(dice.below(1'000'000'000)) +
                       R"(,"type":"quote","sym":)" + inQuotes(dice) + R"(,"name":)" +
                       inQuotes(dice) + R"(,"last":)" + number(dice) + R"(,"halted":)" +
                       (dice.oneIn(2) ? "true" : "false") + R"(,"note":null,"book":[)";
    for (std::size_t level = dice.below(4); level > 0; --level) {
        line += "[" + number(dice) + "," + number(dice) + "]";
        line += level > 1 ? "," : "";
    }
    return line + R"(],"ext":)" + value(dice, 2) + "}";
}

std::string document(Dice & dice) { return dice.oneIn(2) ? tradingMessage(dice) : value(dice, 4); }

// --- damage ---

constexpr std::string_view PIECES[] = {"{",
                                       "}",
                                       "[",
                                       "]",
                                       ",",
                                       ":",
                                       "\"",
                                       "\\",
                                       "/",
                                       "#",
                                       "//",
                                       "// c\n",
                                       "# c\n",
                                       "\n",
                                       " ",
                                       "\b",
                                       "\v",
                                       "\0"sv,
                                       "\\u",
                                       "\\u0041",
                                       "\\ud83d",
                                       "\\udc00",
                                       "\\ud83d\\udc00",
                                       "\\ud840\\udc00",
                                       "\\n",
                                       "\\\"",
                                       "\\x",
                                       "\\u00g0",
                                       "true",
                                       "false",
                                       "null",
                                       "tru",
                                       "-",
                                       "0",
                                       "01",
                                       "1.5",
                                       "1.",
                                       "1e5",
                                       "e",
                                       "E+",
                                       ".",
                                       "\"a\":",
                                       "a:",
                                       "a :",
                                       ",]",
                                       ",}",
                                       "\x80",
                                       "\xBF",
                                       "\xC0\xA2",
                                       "\xC1\x9C",
                                       "\xC3",
                                       "\xC3\xA9",
                                       "\xE3\x81\x82",
                                       "\xE3\x81",
                                       "\xF0\x9F\x98\x80",
                                       "\xF8",
                                       "\xFC",
                                       "\xFE",
                                       "%s",
                                       "\x7F",
                                       "        ",
                                       "9999999999",
                                       "plain text of some length"};

void damage(Dice & dice, std::string & text) {
    std::size_t const place = dice.below(text.size() + 1);
    std::size_t const size = dice.oneIn(3) ? dice.below(20) : 1;
    switch (dice.below(6)) {
        case 0:
            text.erase(place, size);
            break;
        case 1:
            text.insert(place, text.substr(dice.below(text.size() + 1), size));
            break;
        case 2:
            text.resize(place);
            break;
        case 3:
            if (place < text.size()) {
                text[place] = static_cast<char>(dice.below(256));
            }
            break;
        default:
            text.replace(place, dice.below(2), dice.oneOf(PIECES));
            break;
    }
}

TEST(JsonScannerRandom, AgreesWithTheModelOnWholeDocuments) {
    Dice dice(20251);
    for (int round = 0; round < ROUNDS / 4; ++round) {
        std::string const text = document(dice);
        ASSERT_NO_FATAL_FAILURE(expectAgreement(ScanMode::VALUE, text, dice.options()));
    }
}

TEST(JsonScannerRandom, TakesWholeMessages) {
    Dice dice(20252);
    for (int round = 0; round < 1000; ++round) {
        std::string const line = tradingMessage(dice);
        ScanOutcome const outcome = scanWithLibrary(ScanMode::OBJECT, line, 0);
        ASSERT_EQ(outcome.failure, "") << line;
        ASSERT_EQ(outcome.position, line.size()) << line;
    }
}

TEST(JsonScannerRandom, AgreesWithTheModelOnDamagedDocuments) {
    Dice dice(20253);
    for (int round = 0; round < ROUNDS; ++round) {
        std::string text = document(dice);
        for (std::size_t count = 1 + dice.below(3); count > 0; --count) {
            damage(dice, text);
        }
        ASSERT_NO_FATAL_FAILURE(expectAgreement(dice.mode(), text, dice.options()));
    }
}

TEST(JsonScannerRandom, AgreesWithTheModelOnLooseInsidesOfObjects) {
    Dice dice(20254);
    for (int round = 0; round < ROUNDS / 4; ++round) {
        std::string text = members(dice, 3, true);
        if (!dice.oneIn(4)) {
            damage(dice, text);
        }
        ASSERT_NO_FATAL_FAILURE(expectAgreement(ScanMode::FIELDS, text, dice.options()));
    }
}

TEST(JsonScannerRandom, AgreesWithTheModelOnPiecesInAnyOrder) {
    Dice dice(20255);
    for (int round = 0; round < ROUNDS; ++round) {
        std::string text;
        for (std::size_t count = dice.below(10); count > 0; --count) {
            text += dice.oneOf(PIECES);
        }
        ASSERT_NO_FATAL_FAILURE(expectAgreement(dice.mode(), text, dice.options()));
    }
}

TEST(JsonScannerRandom, AgreesWithTheModelOnPiecesInsideAString) {
    Dice dice(20256);
    for (int round = 0; round < ROUNDS; ++round) {
        std::string text = "[\"" + std::string(dice.below(40), 'x');
        for (std::size_t count = dice.below(6); count > 0; --count) {
            text += dice.oneOf(PIECES);
            text += std::string(dice.oneIn(3) ? dice.below(40) : 0, 'y');
        }
        text += dice.oneIn(4) ? "" : "\", 1]";
        ASSERT_NO_FATAL_FAILURE(expectAgreement(ScanMode::ARRAY, text, dice.options()));
    }
}

// All inputs up to a length over the bytes that steer the scanner.
TEST(JsonScannerRandom, AgreesWithTheModelOnAllShortInputs) {
    constexpr std::string_view ALPHABET = "{}[],:\"\\a01.-e#/\n \xC3\xA2";
#ifdef NDEBUG
    constexpr std::size_t LONGEST = 4;
#else
    constexpr std::size_t LONGEST = 3;
#endif
    std::size_t count = 1;
    for (std::size_t size = 0; size <= LONGEST; ++size, count *= ALPHABET.size()) {
        for (std::size_t index = 0; index < count; ++index) {
            std::string text;
            for (std::size_t rest = index; text.size() < size; rest /= ALPHABET.size()) {
                text += ALPHABET[rest % ALPHABET.size()];
            }
            ScanMode const mode = index % 4 == 0 ? ScanMode::FIELDS : ScanMode::VALUE;
            int const options = static_cast<int>(index * 7 % (EVERY_OPTION + 1));
            ASSERT_NO_FATAL_FAILURE(expectAgreement(mode, text, options));
        }
    }
}

}  // namespace
