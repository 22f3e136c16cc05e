#include "examples/backend/Faults.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tvk/json/JsonMessageParser.h"

namespace tvk::test {

using namespace backend;

namespace {

std::optional<Fault> faultIn(std::string const & json) {
    SimpleObjectCache cache(SimpleObjectCache::defaultRawDataConverter());
    JsonMessageParser parser(&cache);
    return faultOf(
        *parser.parseJsonMessage(json.data(), static_cast<unsigned int>(json.size()), 0, nullptr));
}

/// A reply of type "echo" with the body {"a":1}.
std::string frame() {
    using namespace std::string_literals;
    return "\0\0\0\x1F\x02\0\0\x04\0\0\0\0\0\0\0\x04\0\0\0\0\0\0\0\x01"s
           "echo{\"a\":1}";
}

}  // namespace

TEST(BackendFaults, AreReadFromRequests) {
    auto const delay = faultIn(R"({"kind":"delay","milliSec":50,"count":3})");
    ASSERT_TRUE(delay);
    EXPECT_EQ(delay->kind, Fault::DELAY);
    EXPECT_EQ(delay->milliSec, 50);
    EXPECT_EQ(delay->count, 3);

    auto const goodbye = faultIn(R"({"kind":"goodbye","code":18,"text":"保守","retry":false})");
    ASSERT_TRUE(goodbye);
    EXPECT_EQ(goodbye->kind, Fault::GOODBYE);
    EXPECT_EQ(goodbye->code, 18);
    EXPECT_EQ(goodbye->text, "保守");
    EXPECT_FALSE(goodbye->retry);

    auto const burst =
        faultIn(R"({"kind":"burst","count":9,"first":100,"type":"t","subject":"s","paced":true})");
    ASSERT_TRUE(burst);
    EXPECT_EQ(burst->kind, Fault::BURST);
    EXPECT_EQ(burst->count, 9);
    EXPECT_EQ(burst->first, 100);
    EXPECT_EQ(burst->type, "t");
    EXPECT_EQ(burst->subject, "s");
    EXPECT_TRUE(burst->paced);
}

TEST(BackendFaults, HaveOneNameEach) {
    std::vector<char const *> const names = {
        "delay",     "drop",        "badLength",     "badKind",     "badJson",
        "halfFrame", "garbage",     "disconnect",    "slowReading", "silence",
        "goodbye",   "expireLogin", "forgetSession", "burst",       "newDay"};
    int kind = Fault::DELAY;
    for (char const * const name : names) {
        SCOPED_TRACE(name);
        auto const fault = faultIn(R"({"kind":")" + std::string(name) + "\"}");
        ASSERT_TRUE(fault);
        EXPECT_EQ(fault->kind, kind);
        EXPECT_EQ(concernsReplies(fault->kind), kind <= Fault::HALF_FRAME);
        EXPECT_EQ(fault->count, 1);
        EXPECT_TRUE(fault->retry);
        EXPECT_FALSE(fault->paced);
        ++kind;
    }
}

TEST(BackendFaults, AreRefusedWhereTheyMakeNoSense) {
    for (char const * const json :
         {"{}", R"({"kind":""})", R"({"kind":"Delay"})", R"({"kind":["delay"]})",
          R"({"kind":"delay","milliSec":-1})", R"({"kind":"drop","count":0})",
          R"({"kind":"drop","count":10000001})", R"({"kind":"disconnect","afterBytes":-5})",
          R"({"kind":"slowReading","bytesPerSecond":-1})", R"({"kind":"burst","first":-1})"}) {
        EXPECT_FALSE(faultIn(json)) << json;
    }
}

TEST(BackendFaults, ComeToRepliesInTheirOrder) {
    ReplyFaults faults;
    EXPECT_FALSE(faults.next());
    Fault drop;
    drop.kind = Fault::DROP;
    drop.count = 2;
    Fault bad;
    bad.kind = Fault::BAD_KIND;
    faults.add(drop);
    faults.add(bad);
    for (Fault::Kind const kind : {Fault::DROP, Fault::DROP, Fault::BAD_KIND}) {
        auto const fault = faults.next();
        ASSERT_TRUE(fault);
        EXPECT_EQ(fault->kind, kind);
    }
    EXPECT_FALSE(faults.next());
}

TEST(BackendFaults, SpoilFrames) {
    std::string const whole = frame();
    ASSERT_EQ(whole.size(), 35U);

    std::string const badLength = spoiled(Fault::BAD_LENGTH, whole);
    EXPECT_EQ(badLength.substr(0, 4), std::string("\0\0\0\x05", 4));
    EXPECT_EQ(badLength.substr(4), whole.substr(4));

    std::string const badKind = spoiled(Fault::BAD_KIND, whole);
    EXPECT_EQ(badKind[4], 99);
    EXPECT_EQ(badKind.substr(5), whole.substr(5));

    std::string const badJson = spoiled(Fault::BAD_JSON, whole);
    EXPECT_EQ(badJson.substr(24), "echo{\"cut\":");
    EXPECT_EQ(static_cast<std::size_t>(badJson[3]), badJson.size() - 4);

    EXPECT_EQ(spoiled(Fault::HALF_FRAME, whole), whole.substr(0, 17));
}

TEST(BackendFaults, MakeGarbageThatIsNoLength) {
    std::string const bytes = garbage();
    EXPECT_EQ(bytes.size(), 256U);
    EXPECT_EQ(bytes[0], '\xFF');
    EXPECT_EQ(bytes, garbage());
}

}  // namespace tvk::test
