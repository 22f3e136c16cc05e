#include "examples/roundtrip/ReadsBack.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"

namespace tvk::test {

namespace {

/// With a cache of its own, so that two messages share no values.
RefCountedPtr<KestrinMessage> parsed(std::string_view json) {
    SimpleObjectCache cache(SimpleObjectCache::defaultRawDataConverter());
    JsonMessageParser parser(&cache);
    auto message =
        parser.parseJsonMessage(json.data(), static_cast<unsigned int>(json.size()), 0, nullptr);
    EXPECT_FALSE(message.isNull()) << json;
    return message;
}

bool readsBack(std::string_view written, std::string_view read) {
    return readsBackAs(*parsed(written), *parsed(read));
}

std::string nested(int depth, std::string const & open, std::string const & inner,
                   std::string const & close) {
    std::string json = "{\"a\":";
    for (int i = 0; i < depth; ++i) {
        json += open;
    }
    json += inner;
    for (int i = 0; i < depth; ++i) {
        json += close;
    }
    return json + "}";
}

}  // namespace

TEST(ReadsBack, AcceptsTheSame) {
    for (char const * const json :
         {"{}", R"({"a":1})", R"({"a":-0.50,"b":1e400,"c":true,"d":false,"e":""})",
          R"({"a":[],"b":{},"c":[[[1]]],"d":{"e":{"f":"g"}}})",
          R"({"a":[1,"x",{"b":[2,{"c":3}]},[]],"z":9223372036854775808})",
          "{\"a\":\"\xE3\x81\x82\"}"}) {
        EXPECT_TRUE(readsBack(json, json)) << json;
    }
}

TEST(ReadsBack, RefusesWhatDiffers) {
    constexpr char const * ROWS[][2] = {
        {R"({"a":1})", "{}"},
        {"{}", R"({"a":1})"},
        {R"({"a":1})", R"({"b":1})"},
        {R"({"a":1})", R"({"a":2})"},
        {R"({"a":1})", R"({"a":"1"})"},
        {R"({"a":1})", R"({"a":[1]})"},
        {R"({"a":1.5})", R"({"a":1.50})"},
        {R"({"a":1})", R"({"a":1.0})"},
        {R"({"a":1})", R"({"a":true})"},
        {R"({"a":0})", R"({"a":false})"},
        {R"({"a":true})", R"({"a":1})"},
        {R"({"a":true})", R"({"a":false})"},
        {R"({"a":"x"})", R"({"a":"y"})"},
        {R"({"a":"x"})", R"({"a":"xx"})"},
        {R"({"a":[1,2]})", R"({"a":[1]})"},
        {R"({"a":[1]})", R"({"a":[1,2]})"},
        {R"({"a":[1,2]})", R"({"a":[2,1]})"},
        {R"({"a":[[1]]})", R"({"a":[[2]]})"},
        {R"({"a":{"b":1}})", R"({"a":{"b":2}})"},
        {R"({"a":{}})", R"({"a":[]})"},
    };
    for (auto const & [written, read] : ROWS) {
        EXPECT_FALSE(readsBack(written, read)) << written << " and " << read;
    }
}

TEST(ReadsBack, ExpectsTextToEndAtNul) {
    EXPECT_TRUE(readsBack(R"({"a":"x\u0000y"})", R"({"a":"x"})"));
    EXPECT_FALSE(readsBack(R"({"a":"x\u0000y"})", R"({"a":"x\u0000y"})"));
    EXPECT_TRUE(readsBack(R"({"n\u0000m":[1]})", R"({"n":[1]})"));
}

TEST(ReadsBack, ExpectsTheLastOfNamesThatBecomeOne) {
    EXPECT_TRUE(readsBack(R"({"n\u0000a":1,"n\u0000b":2})", R"({"n":2})"));
    EXPECT_FALSE(readsBack(R"({"n\u0000a":1,"n\u0000b":2})", R"({"n":1})"));
}

TEST(ReadsBack, ExpectsNamesToBeTakenForTextOfTheCodePage) {
    // As text of code page 932 the three bytes of the name are U+7E3A and half a character, which
    // becomes U+30FB.
    EXPECT_TRUE(readsBack("{\"\xE3\x81\x82\":[1]}", "{\"\xE7\xB8\xBA\xE3\x83\xBB\":[1]}"));
    EXPECT_FALSE(readsBack("{\"\xE3\x81\x82\":[1]}", "{\"\xE3\x81\x82\":[1]}"));
}

TEST(ReadsBack, ExpectsNullsToVanish) {
    RefCountedPtr<ListData> const list = new ListDataImpl("l");
    list->addElement(nullptr);
    list->addElement(new NumberData(7));
    list->addElement(nullptr);
    RefCountedPtr<RecordData> const written = new MappedRecordData;
    written->setFieldValue("l", list);
    written->setFieldValue("n", RefCountedPtr<FieldValue>());

    EXPECT_TRUE(readsBackAs(*written, *parsed(R"({"l":[7]})")));
    EXPECT_FALSE(readsBackAs(*written, *parsed(R"({"l":[7,7]})")));
    EXPECT_FALSE(readsBackAs(*written, *parsed(R"({"l":[]})")));
}

TEST(ReadsBack, ComparesTheElementTypeName) {
    RefCountedPtr<ListData> const list = new ListDataImpl("m");
    RefCountedPtr<RecordData> const written = new MappedRecordData;
    written->setFieldValue("l", list);
    EXPECT_FALSE(readsBackAs(*written, *parsed(R"({"l":[]})")));
    list->setElementTypeName("l");
    EXPECT_TRUE(readsBackAs(*written, *parsed(R"({"l":[]})")));
}

TEST(ReadsBack, FindsADifferenceAMillionDeep) {
    constexpr int DEPTH = 1'000'000;
    auto const arrays = parsed(nested(DEPTH, "[", "1", "]"));
    EXPECT_TRUE(readsBackAs(*arrays, *arrays));
    EXPECT_FALSE(readsBackAs(*arrays, *parsed(nested(DEPTH, "[", "2", "]"))));
    auto const mixed = parsed(nested(DEPTH / 2, "[{\"a\":", "1", "}]"));
    EXPECT_TRUE(readsBackAs(*mixed, *mixed));
    EXPECT_FALSE(readsBackAs(*mixed, *parsed(nested(DEPTH / 2, "[{\"a\":", "2", "}]"))));
}

}  // namespace tvk::test
