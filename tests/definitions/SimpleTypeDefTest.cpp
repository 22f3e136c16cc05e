#include "tvk/definitions/SimpleTypeDef.h"

#include <gtest/gtest.h>

#include <barrier>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/definitions/Orders.h"
#include "tests/support/PrintCString.h"
#include "tests/support/UsingCodePage.h"
#include "tvk/platform/CodePage.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {
namespace {

static_assert(test::IS_COUNTED_CLASS<SimpleTypeDef, DataTypeDef>);
static_assert(std::is_abstract_v<SimpleTypeDef>);

struct BuiltIn {
    SimpleTypeDef const * (*get)();
    char const * name;
    std::string_view nameJa;
    std::string_view nameJaUtf8;
    std::string_view description;
    std::string_view descriptionUtf8;
};

// Each byte escaped: a hexadecimal escape would take the letters behind it for digits of its own.
constexpr BuiltIn BUILT_INS[] = {
    {SimpleTypeDef::STRING_TYPE, "string", "\x95\xB6\x8E\x9A\x97\xF1",
     "\xE6\x96\x87\xE5\xAD\x97\xE5\x88\x97",
     "\x95\xB6\x8E\x9A\x97\xF1\x82\xCC\x8A\xC8\x92\x50\x83\x5E\x83\x43\x83\x76\x92\xE8\x8B\x60",
     "\xE6\x96\x87\xE5\xAD\x97\xE5\x88\x97\xE3\x81\xAE\xE7\xB0\xA1\xE5\x8D\x98\xE3\x82\xBF\xE3\x82"
     "\xA4"
     "\xE3\x83\x97\xE5\xAE\x9A\xE7\xBE\xA9"},
    {SimpleTypeDef::INTEGER_TYPE, "integer", "\x90\xAE\x90\x94", "\xE6\x95\xB4\xE6\x95\xB0",
     "\x90\xAE\x90\x94\x82\xCC\x8A\xC8\x92\x50\x83\x5E\x83\x43\x83\x76\x92\xE8\x8B\x60",
     "\xE6\x95\xB4\xE6\x95\xB0\xE3\x81\xAE\xE7\xB0\xA1\xE5\x8D\x98\xE3\x82\xBF\xE3\x82\xA4\xE3\x83"
     "\x97"
     "\xE5\xAE\x9A\xE7\xBE\xA9"},
    {SimpleTypeDef::DECIMAL_TYPE, "decimal", "\x31\x30\x90\x69\x90\xA7\x90\x94",
     "\x31\x30\xE9\x80\xB2\xE5\x88\xB6\xE6\x95\xB0",
     "\x31\x30\x90\x69\x90\xA7\x90\x94\x82\xCC\x8A\xC8\x92\x50\x83\x5E\x83\x43\x83\x76\x92\xE8\x8B"
     "\x60",
     "\x31\x30\xE9\x80\xB2\xE5\x88\xB6\xE6\x95\xB0\xE3\x81\xAE\xE7\xB0\xA1\xE5\x8D\x98\xE3\x82\xBF"
     "\xE3\x82\xA4\xE3\x83\x97\xE5\xAE\x9A\xE7\xBE\xA9"},
    {SimpleTypeDef::BOOLEAN_TYPE, "boolean", "Boolean", "Boolean",
     "Boolean\x8A\xC8\x92\x50\x83\x5E\x83\x43\x83\x76\x92\xE8\x8B\x60",
     "Boolean\xE7\xB0\xA1\xE5\x8D\x98\xE3\x82\xBF\xE3\x82\xA4\xE3\x83\x97\xE5\xAE\x9A\xE7\xBE\xA9"},
};

CString text(std::string_view bytes) {
    return CString(bytes.data(), static_cast<int>(bytes.size()));
}

CString shiftJis(std::string_view utf8) {
    test::UsingCodePage const japanese(932);
    return platform::utf8ToAnsi(utf8.data(), static_cast<unsigned int>(utf8.size()));
}

TEST(SimpleTypeDef, KeepsTheOrderOfItsOperations) {
    test::expectSimpleTypeDefOrder<SimpleTypeDef>();
}

TEST(SimpleTypeDef, KnowsFourBuiltInTypes) {
    for (BuiltIn const & row : BUILT_INS) {
        SCOPED_TRACE(row.name);
        SimpleTypeDef const * const type = row.get();
        ASSERT_NE(type, nullptr);
        EXPECT_EQ(type, row.get());
        EXPECT_EQ(type->getName(), row.name);
        EXPECT_EQ(type->getNameJa(), text(row.nameJa));
        EXPECT_EQ(type->getNameJa(), shiftJis(row.nameJaUtf8));
        EXPECT_EQ(type->getDescription(), text(row.description));
        EXPECT_EQ(type->getDescription(), shiftJis(row.descriptionUtf8));
        EXPECT_TRUE(type->isSimpleType());
        EXPECT_FALSE(type->isRecordType());
        EXPECT_FALSE(type->isListType());
        EXPECT_FALSE(type->isDerivedType());
        EXPECT_EQ(type->getRefCount(), 1);
    }
}

// ---- Questions to a fresh process, which has not called the built-in types yet -------------------

int const HOLDS = 0;
int const FAILS = 1;

class SimpleTypeDefDeathTest : public testing::Test {
protected:
    SimpleTypeDefDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

void makeUnder(unsigned int codePage) {
    test::UsingCodePage const using_(codePage);
    bool holds = true;
    for (BuiltIn const & row : BUILT_INS) {
        holds = holds && row.get()->getNameJa() == text(row.nameJa) &&
                row.get()->getDescription() == text(row.description);
    }
    std::exit(holds ? HOLDS : FAILS);
}

TEST_F(SimpleTypeDefDeathTest, TextsAreShiftJisUnderEveryCodePage) {
    for (unsigned int const codePage : {932u, 1252u, 28591u, 65001u}) {
        SCOPED_TRACE(codePage);
        EXPECT_EXIT(makeUnder(codePage), testing::ExitedWithCode(HOLDS), "");
    }
}

void raceForTheFirstCall() {
    constexpr int THREADS = 8;
    bool holds = true;
    for (BuiltIn const & row : BUILT_INS) {
        std::barrier start(THREADS);
        std::vector<SimpleTypeDef const *> seen(THREADS);
        std::vector<std::thread> threads;
        for (SimpleTypeDef const *& each : seen) {
            threads.emplace_back([&row, &start, &each] {
                start.arrive_and_wait();
                each = row.get();
            });
        }
        for (std::thread & each : threads) {
            each.join();
        }
        holds = holds && seen == std::vector(THREADS, row.get()) && row.get()->getRefCount() == 1;
    }
    std::exit(holds ? HOLDS : FAILS);
}

TEST_F(SimpleTypeDefDeathTest, ThreadsMayRaceForTheFirstCall) {
    EXPECT_EXIT(raceForTheFirstCall(), testing::ExitedWithCode(HOLDS), "");
}

/// Ends behind the statics that are made after it, and sees whether they have released what it holds.
struct LastHolder {
    ~LastHolder() {
        bool holds = true;
        for (auto const & each : held) {
            holds = holds && each->getRefCount() == 1;
        }
        held.clear();
        std::_Exit(holds ? HOLDS : FAILS);
    }

    std::vector<RefCountedPtr<SimpleTypeDef const>> held;
};

void outliveTheLibrarysReferences() {
    static LastHolder holder;
    bool holds = true;
    for (BuiltIn const & row : BUILT_INS) {
        holder.held.emplace_back(row.get());
        holds = holds && row.get()->getRefCount() == 2;
    }
    if (!holds) {
        std::_Exit(FAILS);
    }
    std::exit(FAILS);  // the holder decides
}

TEST_F(SimpleTypeDefDeathTest, BuiltInTypesAreReleasedAtExit) {
    EXPECT_EXIT(outliveTheLibrarysReferences(), testing::ExitedWithCode(HOLDS), "");
}

}  // namespace
}  // namespace tvk
