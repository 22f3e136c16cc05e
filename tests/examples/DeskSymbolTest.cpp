#include "examples/desk/model/Symbol.h"

#include <gtest/gtest.h>

#include "tests/examples/DeskMessages.h"

namespace {

using desk::symbolsIn;
using tvk::test::messageOf;

TEST(DeskSymbol, IsReadFromTheReply) {
    auto const symbols = symbolsIn(
        *messageOf(R"({"symbols":[{"code":"7203","name":"みのり自動車","tick":0.5,"unit":100},)"
                   R"({"code":"9407","name":"ほしぞら通信","tick":0.1,"unit":1000}]})"));
    ASSERT_EQ(symbols.size(), 2U);
    EXPECT_EQ(symbols[0].code, "7203");
    EXPECT_EQ(symbols[0].name, "みのり自動車");
    EXPECT_EQ(symbols[0].tick, 0.5);
    EXPECT_EQ(symbols[1].unit, 1000);
    EXPECT_EQ(symbolOf(symbols, "9407"), &symbols[1]);
    EXPECT_EQ(symbolOf(symbols, "1"), nullptr);
}

TEST(DeskSymbol, HasSoundValuesWhateverComes) {
    EXPECT_TRUE(symbolsIn(*messageOf("{}")).empty());
    EXPECT_TRUE(symbolsIn(*messageOf(R"({"symbols":"none"})")).empty());
    auto const symbols = symbolsIn(
        *messageOf(R"({"symbols":[{"name":"x"},7,{"code":"1","tick":-1,"unit":0},{"code":"2"}]})"));
    ASSERT_EQ(symbols.size(), 2U) << "one without a code, and what is no record, are left out";
    EXPECT_EQ(symbols[0].tick, 1);
    EXPECT_EQ(symbols[0].unit, 1);
    EXPECT_EQ(symbols[1].name, "");
}

}  // namespace
