#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/examples/RunProgram.h"

namespace tvk::test {

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

Outcome roundTrip(std::vector<std::string> const & arguments, Input const & input = {},
                  ErrorsTo errorsTo = ErrorsTo::PIPE) {
    return runProgram(TVK_ROUNDTRIP, arguments, input, errorsTo);
}

/// The outcome of these lines on standard input.
Outcome onLines(std::string const & lines) { return roundTrip({"-"}, {lines}); }

std::string times(std::size_t count, std::string const & text) {
    std::string out;
    out.reserve(count * text.size());
    for (std::size_t i = 0; i < count; ++i) {
        out += text;
    }
    return out;
}

}  // namespace

TEST(RoundTripProgram, TakesTheTradingMessagesThereAndBack) {
    Outcome const outcome = roundTrip({});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, HasSubstr("trading.ndjson"));
    EXPECT_THAT(outcome.out, HasSubstr("  sym          string  4346\n"));
    EXPECT_THAT(outcome.out, HasSubstr("as JSON:\n  {\"ccy\":\"JPY\",\"chg\":-37,"));
    EXPECT_THAT(outcome.out, HasSubstr("\nJSON to message         400 messages "));
    EXPECT_THAT(outcome.out, HasSubstr("\nmessage to JSON         400 messages "));
    EXPECT_THAT(outcome.out, HasSubstr(" messages/s "));
    EXPECT_THAT(outcome.out, HasSubstr(" bytes/s\n"));
    EXPECT_THAT(outcome.out, HasSubstr(" of 4096 places, "));
    EXPECT_THAT(outcome.out, EndsWith("\n400 lines, 400 read back the same, 0 bad\n"));
}

TEST(RoundTripProgram, ShowsTextInUtf8) {
    Outcome const outcome = onLines("{\"name\":\"\xE3\x81\x82\",\"n\":[1,2],\"r\":{\"a\":1}}\n");
    EXPECT_THAT(outcome.out, HasSubstr("  name         string  \xE3\x81\x82\n"));
    EXPECT_THAT(outcome.out, HasSubstr("  n            list    2 elements\n"));
    EXPECT_THAT(outcome.out, HasSubstr("  r            record  1 fields\n"));
}

TEST(RoundTripProgram, CountsTheHitsOfTheCache) {
    // Two values; each line is read twice, so the first line hits twice and the second four times.
    Outcome const outcome = onLines("{\"a\":\"x\",\"b\":10}\n{\"a\":\"x\",\"b\":10}\n");
    EXPECT_THAT(outcome.out, HasSubstr("2 of 4096 places, 6 hits, 0 conflicts\n"));
}

TEST(RoundTripProgram, HelpNamesTheOptions) {
    Outcome const outcome = roundTrip({"--help"});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_THAT(outcome.out, StartsWith("Usage: roundtrip"));
    EXPECT_THAT(outcome.out, HasSubstr("--options BITS"));
    EXPECT_EQ(outcome.err, "");
}

TEST(RoundTripProgram, RefusesWrongUsage) {
    std::vector<std::string> const rows[] = {
        {"--options"},
        {"--options", "x"},
        {"--options", "2x"},
        {"--options", "-2"},
        {"--options", ""},
        {"--options="},
        {"--options=4.0"},
        {"--options2"},
        {"--options", "9e9"},
        {"--nonsense"},
        {"-x"},
        {"one", "two"},
    };
    for (std::vector<std::string> const & row : rows) {
        Outcome const outcome = roundTrip(row);
        SCOPED_TRACE(testing::PrintToString(row));
        EXPECT_EQ(outcome.exitStatus, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, EndsWith("roundtrip --help says more\n"));
    }
}

TEST(RoundTripProgram, RefusesFilesThatCannotBeRead) {
    Outcome const missing = roundTrip({"no/such/file"});
    EXPECT_EQ(missing.exitStatus, 2);
    EXPECT_THAT(missing.err, HasSubstr("cannot open no/such/file: "));

    std::string const folder = std::filesystem::temp_directory_path().string();
    Outcome const aFolder = roundTrip({folder});
    EXPECT_EQ(aFolder.exitStatus, 2);
    EXPECT_THAT(aFolder.err, HasSubstr(folder));
}

TEST(RoundTripProgram, ReportsBadLinesAndGoesOn) {
    Outcome const outcome = onLines("{\"a\":1}\n[1]\n{\"a\":2}\n{\"a\":\n\n{}");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.err,
              "line 2: invalid message data near position 0: tag '{' is expected, but was "
              "<[1]>...\n"
              "line 4: invalid message data near position 5: tag '}' is expected, but was <>...\n"
              "line 5: invalid message data near position 0: tag '{' is expected, but was <>...\n");
    EXPECT_THAT(outcome.out, EndsWith("\n6 lines, 3 read back the same, 3 bad\n"));
}

TEST(RoundTripProgram, TakesAnEmptyInput) {
    Outcome const outcome = onLines("");
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_THAT(outcome.out, EndsWith("\n0 lines, 0 read back the same, 0 bad\n"));
}

TEST(RoundTripProgram, TakesLinesThatEndWithCarriageReturn) {
    EXPECT_EQ(onLines("{\"a\":1}\r\n{\"a\":2}\r\n").exitStatus, 0);
}

TEST(RoundTripProgram, GivesTheOptionBitsToTheScanner) {
    struct Row {
        char const * bits;
        char const * line;
        char const * without;  ///< what stands in the complaint without the bits, and not with them
    };
    constexpr Row ROWS[] = {
        {"2", "// x", "was <// x>..."},
        {"4", "# x", "was <# x>..."},
        {"6", "# x", "was <# x>..."},
        {"8", "{a:1}", "was <a:1}>..."},
        {"16", "{\"a\":[1,],}", "near position 8: invalid number"},
        {"24", "{a:[1,],}", "was <a:[1,],}>..."},
    };
    for (Row const & row : ROWS) {
        SCOPED_TRACE(row.line);
        EXPECT_THAT(onLines(row.line).err, HasSubstr(row.without));
        for (std::vector<std::string> const & arguments :
             {std::vector<std::string>{"--options", row.bits, "-"},
              std::vector<std::string>{"-", std::string("--options=") + row.bits}}) {
            EXPECT_THAT(roundTrip(arguments, {row.line}).err, Not(HasSubstr(row.without)));
        }
    }
    EXPECT_EQ(roundTrip({"--options", "24", "-"}, {"{a:[1,],}"}).exitStatus, 0);
}

TEST(RoundTripProgram, TakesWhatTheFormatChanges) {
    // Each line is well-formed, and what is read back differs as the format says.
    Outcome const outcome = onLines(
        "{\"a\":null,\"b\":[null,1,null]}\n"
        "{\"a\":\"x\\u0000y\",\"n\\u0000m\":1}\n"
        "{\"n\\u0000a\":1,\"n\\u0000b\":2}\n"
        "{\"\xE3\x81\x82\":[1],\"\xE3\x81\x84\":{\"\xE3\x81\x86\":\"\xE3\x81\x88\"}}\n"
        "{\"a\":\"\\ud83d\\ude00 \\ud840\\udc00 \\ude00\"}\n"
        "{\"a\":\"\xE3\x81\x8B\xE3\x82\x99\"}\n"
        "{\"a\":1,\"a\":\"again\"}\n"
        "{\"__raw__body__\":1}\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST(RoundTripProgram, TakesTextOfEscapesThatFillsTheBufferExactly) {
    // Around half the first buffer, and of a size that makes the buffer grow to what is asked for.
    for (std::size_t const around : {std::size_t{4090}, std::size_t{20000}}) {
        std::string lines;
        for (std::size_t count = around; count < around + 8; ++count) {
            lines += "{\"a\":\"" + times(count, "\\\"") + "\"}\n";
        }
        Outcome const outcome = onLines(lines);
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.exitStatus, 0);
    }
}

TEST(RoundTripProgram, TakesInvalidUtf8InTextAndNames) {
    Outcome const outcome = onLines("{\"a\":\"\xFF\",\"b\":\"\xE3\x41\x42\"}\n");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.err, StartsWith("line 1: invalid message data near position "));

    Outcome const cut = onLines("{\"a\":\"\xE3\x41\x42\",\"\xC3\x41\":\"\xF0\x90\x41\x41\"}\n");
    EXPECT_EQ(cut.err, "");
    EXPECT_EQ(cut.exitStatus, 0);
}

TEST(RoundTripProgram, ReportsNulBytesInLines) {
    using namespace std::string_literals;
    Outcome const outcome = onLines("{\"a\":\"x\0y\"}\n\0\n{\"a\":1}\n"s);
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.err, HasSubstr("line 1: invalid message data near position 7: "));
    EXPECT_THAT(outcome.err, HasSubstr("line 2: invalid message data near position 0: "));
    EXPECT_THAT(outcome.err, Not(HasSubstr("line 3")));
}

TEST(RoundTripProgram, DoesNotLetALineSteerTheTerminal) {
    Outcome const outcome = onLines("\x1B[2J\n");
    EXPECT_THAT(outcome.err, HasSubstr("<\\x1B[2J>"));
    EXPECT_THAT(outcome.err, Not(HasSubstr("\x1B")));
}

TEST(RoundTripProgram, SurvivesALineOf100MB) {
    constexpr std::size_t SIZE = 100'000'000;
    Outcome const outcome = onLines("{\"a\":\"" + std::string(SIZE, 'x') + "\"}\n{\"a\":\"y\"}\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_THAT(outcome.out, EndsWith("\n2 lines, 2 read back the same, 0 bad\n"));
}

TEST(RoundTripProgram, SurvivesNestingAMillionDeep) {
    constexpr std::size_t DEPTH = 1'000'000;
    Outcome const outcome = onLines("{\"a\":" + times(DEPTH, "[") + times(DEPTH, "]") + "}\n" +
                                    times(DEPTH, "{\"a\":") + "1" + times(DEPTH, "}") + "\n" +
                                    times(DEPTH / 2, "{\"a\":[") + "1" + times(DEPTH / 2, "]}") +
                                    "\n" + times(DEPTH, "{\"a\":") + "\n");
    EXPECT_THAT(outcome.err, StartsWith("line 4: invalid message data near position 5000000: "));
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.out, EndsWith("\n4 lines, 3 read back the same, 1 bad\n"));
}

TEST(RoundTripProgram, ShowsProgressOnATerminal) {
    Outcome const outcome = roundTrip({"-"}, {"{}\n{}\n[\n", 1}, ErrorsTo::TERMINAL);
    EXPECT_THAT(outcome.err, HasSubstr("\r3 lines, 0 MB\r\x1B[K"));
    EXPECT_THAT(outcome.err, HasSubstr("line 3: invalid message data"));
}

TEST(RoundTripProgram, ShowsNoProgressInAPipe) {
    Outcome const outcome = roundTrip({"-"}, {"{}\n{}\n{}\n", 1});
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

}  // namespace tvk::test
