#include "modules/asio/FrameMessages.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/AllocationCounter.h"
#include "tests/support/FrameModel.h"
#include "tests/support/FrameStream.h"
#include "tests/support/HeapUse.h"
#include "tests/support/PrintCString.h"
#include "tests/support/UsingCodePage.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/json/JsonMessageParser.h"

namespace {

using namespace tvk;
using namespace tvk::test;

using MessageReference = RefCountedPtr<KestrinMessage>;

constexpr unsigned int LIMIT = 16U << 20U;
constexpr int BAD_FRAME = KestrinConstants::ERR_ProtocolFailure;
constexpr int BAD_DATA = KestrinConstants::ERR_InvalidMessageData;

// "stock", then the same in code page 932.
constexpr char STOCK_UTF8[] = "\xe6\xa0\xaa";
constexpr char STOCK_932[] = "\x8a\x94";

PlainFrame quote() {
    PlainFrame frame;
    frame.kind = FRAME_NOTICE;
    frame.number = 5;
    frame.type = "quote";
    frame.subject = "7203";
    frame.body = "{\"last\":327}";
    return frame;
}

/// Reads frames out of the bytes of a stream into messages.
class Road {
public:
    MessageReference read(std::string_view bytes, ErrorInfo * error) {
        feed(reader_, bytes);
        Frame frame;
        EXPECT_EQ(reader_.next(&frame, error), FrameReader::Result::FRAME);
        return messages_.read(frame, error);
    }
    MessageReference read(PlainFrame const & frame) {
        ErrorInfo error;
        MessageReference const message = read(bytesOf(frame), &error);
        EXPECT_FALSE(message.isNull()) << error.toString();
        EXPECT_FALSE(error.hasError());
        return message;
    }

    FrameMessages & messages() { return messages_; }

private:
    SimpleObjectCache cache_{SimpleObjectCache::defaultRawDataConverter()};
    FrameReader reader_{LIMIT};
    FrameMessages messages_{&cache_};
};

TEST(FrameMessagesTest, ReadANotice) {
    MessageReference const message = Road().read(quote());
    EXPECT_EQ(message->header().getMessageKind(), MSGKIND_NOTICE);
    EXPECT_EQ(message->header().getMessageTypeId(), "quote");
    EXPECT_EQ(message->header().getRequestId(), "");
    EXPECT_EQ(message->header().getFieldCount(), 1U);
    EXPECT_EQ(message->header().getFieldValue("subject")->asString(), "7203");
    EXPECT_EQ(message->getFieldCount(), 1U);
    EXPECT_EQ(message->getFieldValue("last")->intValue(), 327);
    EXPECT_EQ(message->getSubMessageCount(), 0U);
}

struct Number {
    unsigned long long number;
    char const * text;
};

TEST(FrameMessagesTest, GiveTheNumberOfRequestsAndRepliesAsTheirIdentifier) {
    constexpr Number NUMBERS[] = {{0, "0"},
                                  {7, "7"},
                                  {10, "10"},
                                  {1'234'567'890, "1234567890"},
                                  {18'446'744'073'709'551'615U, "18446744073709551615"}};
    Road road;
    for (Number const & row : NUMBERS) {
        PlainFrame frame = quote();
        frame.number = row.number;
        frame.kind = FRAME_REQUEST;
        EXPECT_EQ(road.read(frame)->header().getRequestId(), row.text);
        EXPECT_EQ(road.read(frame)->header().getMessageKind(), MSGKIND_REQUEST);
        frame.kind = FRAME_REPLY;
        frame.isFailure = true;
        EXPECT_EQ(road.read(frame)->header().getRequestId(), row.text);
        EXPECT_EQ(road.read(frame)->header().getMessageKind(), MSGKIND_REPLY);
    }
}

TEST(FrameMessagesTest, ReadWhatIsNoMessageAsOneWithoutKind) {
    Road road;
    for (int kind = FRAME_HELLO; kind <= FRAME_GOODBYE; ++kind) {
        PlainFrame frame;
        frame.kind = kind;
        frame.number = 9;
        frame.body = "{\"protocol\":1}";
        MessageReference const message = road.read(frame);
        EXPECT_EQ(message->header().getMessageKind(), 0);
        EXPECT_EQ(message->header().getRequestId(), "");
        EXPECT_EQ(message->header().getMessageTypeId(), "");
        EXPECT_EQ(message->header().getFieldCount(), 0U);
        EXPECT_EQ(message->getFieldValue("protocol")->intValue(), 1);
    }
}

TEST(FrameMessagesTest, ReadAnEmptyBodyAsNoFields) {
    PlainFrame frame = quote();
    frame.body = "";
    EXPECT_EQ(Road().read(frame)->getFieldCount(), 0U);
    frame.body = "{}";
    EXPECT_EQ(Road().read(frame)->getFieldCount(), 0U);
}

TEST(FrameMessagesTest, TakeBlanksAroundABodyAndIgnoreWhatFollowsIt) {
    PlainFrame frame = quote();
    frame.body = " \r\n{\"last\":327} ";
    EXPECT_EQ(Road().read(frame)->getFieldValue("last")->intValue(), 327);
    frame.body += "{x";
    EXPECT_EQ(Road().read(frame)->getFieldValue("last")->intValue(), 327);
}

TEST(FrameMessagesTest, ReadHeaderFields) {
    PlainFrame frame = quote();
    frame.headerFields = R"({"a":1,"b":{"c":"d"},"subject":"other","none":null})";
    MessageReference const message = Road().read(frame);
    KestrinMessageHeader const & header = message->header();
    EXPECT_EQ(header.getFieldCount(), 3U);
    EXPECT_EQ(header.getFieldValue("a")->intValue(), 1);
    EXPECT_EQ(header.getFieldValue("b")->asRecord().getFieldValue("c")->asString(), "d");
    EXPECT_EQ(header.getFieldValue("subject")->asString(), "7203");

    frame.subject = "";
    EXPECT_FALSE(Road().read(frame)->header().hasField("subject"));
    frame.headerFields = "";
    EXPECT_EQ(Road().read(frame)->header().getFieldCount(), 0U);
}

TEST(FrameMessagesTest, ReadSubMessages) {
    PlainFrame innermost = quote();
    innermost.kind = 0;
    innermost.number = 0;
    innermost.subject = "";
    PlainFrame inner = innermost;
    inner.kind = FRAME_REQUEST;
    inner.subject = "6758";
    inner.requestId = std::string("id-") + STOCK_UTF8;
    inner.headerFields = "{\"h\":2}";
    inner.subMessages = {innermost, innermost};
    PlainFrame frame = quote();
    frame.type = "[]";
    frame.body = "";
    frame.subMessages = {inner, innermost};

    UsingCodePage const japanese(932);
    MessageReference const message = Road().read(frame);
    ASSERT_EQ(message->getSubMessageCount(), 2U);
    MessageReference const first = message->getSubMessage(0);
    EXPECT_EQ(first->header().getMessageKind(), MSGKIND_REQUEST);
    EXPECT_EQ(first->header().getRequestId(), CString("id-") + STOCK_932);
    EXPECT_EQ(first->header().getFieldValue("subject")->asString(), "6758");
    EXPECT_EQ(first->header().getFieldValue("h")->intValue(), 2);
    ASSERT_EQ(first->getSubMessageCount(), 2U);
    EXPECT_EQ(first->getSubMessage(1)->getFieldValue("last")->intValue(), 327);
    MessageReference const second = message->getSubMessage(1);
    EXPECT_EQ(second->header().getMessageKind(), 0);
    EXPECT_EQ(second->header().getRequestId(), "");
    EXPECT_EQ(second->header().getFieldCount(), 0U);
    EXPECT_EQ(second->header().getMessageTypeId(), "quote");
}

TEST(FrameMessagesTest, BringTextsToTheCodePage) {
    UsingCodePage const japanese(932);
    PlainFrame frame = quote();
    frame.type = STOCK_UTF8;
    frame.subject = std::string(STOCK_UTF8) + "x";
    frame.body = std::string("{\"name\":\"") + STOCK_UTF8 + "x\"}";
    MessageReference const message = Road().read(frame);
    EXPECT_EQ(message->header().getMessageTypeId(), STOCK_932);
    EXPECT_EQ(message->header().getFieldValue("subject")->asString(), CString(STOCK_932) + "x");
    EXPECT_EQ(message->getFieldValue("name")->asString(), CString(STOCK_932) + "x");
}

TEST(FrameMessagesTest, ShareTheSubjectWithTheStringsOfTheBody) {
    UsingCodePage const japanese(932);
    for (std::string const & subject : {std::string("7203"), std::string(STOCK_UTF8)}) {
        PlainFrame frame = quote();
        frame.subject = subject;
        frame.body = "{\"code\":\"" + subject + "\"}";
        MessageReference const message = Road().read(frame);
        EXPECT_EQ(message->header().getFieldValue("subject"), message->getFieldValue("code"));
    }
}

struct Bad {
    char const * name;
    char const * body;
    char const * headerFields;
    char const * text;
};

TEST(FrameMessagesTest, RefuseBadJson) {
    constexpr Bad ROWS[] = {
        {"cut", "{\"a\":", nullptr, "bad JSON in the body of 5 bytes: "},
        {"no object", "[1]", nullptr, "bad JSON in the body of 3 bytes: "},
        {"a word", "null", nullptr, "bad JSON in the body of 4 bytes: "},
        {"blanks", "  ", nullptr, "bad JSON in the body of 2 bytes: "},
        {"header fields", "{}", "{x}", "bad JSON in the header fields of 3 bytes: "},
        {"a list of header fields", "{}", "[]", "bad JSON in the header fields of 2 bytes: "},
    };
    Road road;
    for (Bad const & row : ROWS) {
        SCOPED_TRACE(row.name);
        PlainFrame frame = quote();
        frame.body = row.body;
        if (row.headerFields != nullptr) {
            frame.headerFields = row.headerFields;
        }
        PlainFrame inner = frame;
        inner.number = 0;
        PlainFrame outer = quote();
        outer.subMessages = {inner};
        for (PlainFrame const & bad : {frame, outer}) {
            ErrorInfo error;
            EXPECT_TRUE(road.read(bytesOf(bad), &error).isNull());
            EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
            EXPECT_EQ(error.getErrorCode(), BAD_DATA);
            EXPECT_EQ(error.getErrorMessage().Find(row.text), 0) << error.toString();
            EXPECT_TRUE(road.read(bytesOf(bad), nullptr).isNull());
        }
        // The stream goes on.
        EXPECT_EQ(road.read(quote())->getFieldCount(), 1U);
    }
}

TEST(FrameMessagesTest, SayWhereJsonIsBad) {
    PlainFrame frame = quote();
    frame.body = "{\"a\":01}";
    ErrorInfo error;
    EXPECT_TRUE(Road().read(bytesOf(frame), &error).isNull());
    EXPECT_GT(error.getErrorMessage().Find("near position 5"), 0) << error.toString();
}

TEST(FrameMessagesTest, RefuseBrokenSubMessagesThatNoReaderHasSeen) {
    PlainFrame deep = quote();
    deep.number = 0;
    for (int i = 0; i < 65; ++i) {
        PlainFrame outer = quote();
        outer.number = 0;
        outer.subMessages = {deep};
        deep = outer;
    }
    std::string const tooDeep = bigEndian(1, 4) + bytesOf(deep.subMessages->front());
    Road road;
    for (std::string const & bytes : {std::string(3, '\0'), bigEndian(1, 4), bigEndian(0, 4) + "x",
                                      bigEndian(1, 4) + tooDeep}) {
        Frame frame;
        frame.kind = FRAME_NOTICE;
        frame.subMessages = bytes;
        ErrorInfo error;
        EXPECT_TRUE(road.messages().read(frame, &error).isNull());
        EXPECT_EQ(error.getErrorCode(), BAD_FRAME) << error.toString();
        EXPECT_TRUE(road.messages().read(frame, nullptr).isNull());
    }
}

TEST(FrameMessagesTest, KnowTheTypesThatTheyHaveSeen) {
    Road road;
    PlainFrame other = quote();
    other.type = "order";
    CString const quoteType = road.read(quote())->header().getMessageTypeId();
    CString const orderType = road.read(other)->header().getMessageTypeId();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(road.read(quote())->header().getMessageTypeId().GetString(),
                  quoteType.GetString());
        EXPECT_EQ(road.read(other)->header().getMessageTypeId().GetString(), orderType.GetString());
    }
}

TEST(FrameMessagesTest, ReadTypesOfAnyLength) {
    Road road;
    for (std::size_t size : {0U, 1U, 127U, 128U, 129U, 200U, 65'535U}) {
        PlainFrame frame = quote();
        frame.type = std::string(size, 't');
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(road.read(frame)->header().getMessageTypeId(),
                      CString('t', static_cast<int>(size)));
            frame.type = std::string(size, 'u');
            EXPECT_EQ(road.read(frame)->header().getMessageTypeId(),
                      CString('u', static_cast<int>(size)));
            frame.type = std::string(size, 't');
        }
    }
}

TEST(FrameMessagesTest, RememberABoundedNumberOfTypes) {
    if (!HeapUse::available()) {
        GTEST_SKIP() << "the heap is not watched here";
    }
    Road road;
    road.read(quote());
    HeapUse const use;
    for (int i = 0; i < 20'000; ++i) {
        PlainFrame frame = quote();
        frame.type = std::to_string(i) + std::string(i % 2 == 0 ? 120 : 1000, 't');
        EXPECT_EQ(road.read(frame)->header().getMessageTypeId(), frame.type.c_str());
    }
    EXPECT_LT(use.bytes(), 150'000);
}

TEST(FrameMessagesTest, AllocateForTheHeaderAndItsSubjectAlone) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    std::string const body = R"({"bid":326,"code":"7203","last":327})";
    SimpleObjectCache cache(SimpleObjectCache::defaultRawDataConverter());
    JsonMessageParser parser(&cache);
    FrameMessages messages(&cache);
    Frame frame;
    frame.kind = FRAME_NOTICE;
    frame.type = "quote";
    frame.body = body;
    auto const countOf = [](auto const & read) {
        read();
        AllocationCounter const allocations;
        read();
        return allocations.count();
    };
    auto const readMessage = [&] { messages.read(frame, nullptr); };
    long long const bare = countOf([&] {
        parser.parseJsonMessage(body.data(), static_cast<unsigned int>(body.size()), 0, nullptr);
    });
    EXPECT_EQ(countOf(readMessage), bare + 2);
    frame.subject = "7203";
    EXPECT_EQ(countOf(readMessage), bare + 4);
    frame.kind = FRAME_REPLY;
    frame.subject = "";
    EXPECT_EQ(countOf(readMessage), bare + 3);
}

}  // namespace
