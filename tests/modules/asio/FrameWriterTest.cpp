#include "modules/asio/FrameWriter.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "modules/asio/FrameMessages.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/FrameModel.h"
#include "tests/support/FrameStream.h"
#include "tests/support/HeapUse.h"
#include "tests/support/HexBytes.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RandomValues.h"
#include "tests/support/SameMessage.h"
#include "tests/support/TextBytes.h"
#include "tests/support/UsingCodePage.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/RawDataImpl.h"
#include "tvk/values/StringData.h"

namespace {

using namespace tvk;
using namespace tvk::test;

using MessageReference = RefCountedPtr<KestrinMessage>;

constexpr unsigned int LIMIT = 16U << 20U;
constexpr int BAD_SIZE = KestrinConstants::ERR_InvalidMessageSize;
constexpr int BAD_FRAME = KestrinConstants::ERR_ProtocolFailure;
constexpr int BAD_DATA = KestrinConstants::ERR_InvalidMessageData;

// "stock" in code page 932, then the same in UTF-8.
constexpr char STOCK_932[] = "\x8a\x94";
constexpr char STOCK_UTF8[] = "\xe6\xa0\xaa";

MessageReference messageOf(CString const & type) {
    MessageReference message(new MappedMessage);
    message->header().setMessageTypeId(type);
    return message;
}

MessageReference quote() {
    MessageReference message = messageOf("quote");
    message->setFieldValue("last", new NumberData(327LL));
    return message;
}

/// Writes with no flags, as a notice; a failed expectation where that does not go.
class Road {
public:
    std::string write(KestrinMessage const & message, CString const & subject = "",
                      FrameKind kind = FRAME_NOTICE) {
        ErrorInfo error;
        std::string const bytes(writer_.write(kind, 0, 1, subject, message, &error, LIMIT));
        EXPECT_FALSE(bytes.empty()) << error.toString();
        EXPECT_FALSE(error.hasError());
        return bytes;
    }

    MessageReference read(std::string_view bytes) {
        feed(reader_, bytes);
        Frame frame;
        ErrorInfo error;
        EXPECT_EQ(reader_.next(&frame, &error), FrameReader::Result::FRAME) << error.toString();
        MessageReference message = messages_.read(frame, &error);
        EXPECT_FALSE(message.isNull()) << error.toString();
        EXPECT_EQ(reader_.pendingBytes(), 0U);
        return message;
    }

private:
    SimpleObjectCache cache_{SimpleObjectCache::defaultRawDataConverter()};
    FrameReader reader_{LIMIT};
    FrameMessages messages_{&cache_};
    FrameWriter writer_;
};

// The two messages whose bytes docs/frames.md shows.

MessageReference documentedNotice() {
    MessageReference notice = quote();
    notice->setFieldValue("code", "7203", 4);
    notice->header().setFieldValue("subject", "7203", 4);
    return notice;
}

MessageReference documentedReply() {
    MessageReference order = messageOf("order");
    order->header().setMessageKind(MSGKIND_REQUEST);
    order->header().setRequestId("a1");
    order->setFieldValue("price", new NumberData(100LL));
    MessageReference reply = messageOf(KestrinMessage::MSGTYPE_LIST_MESSAGE);
    reply->header().setFieldValue("node", new NumberData(2LL));
    reply->addSubMessage(order);
    return reply;
}

struct Row {
    char const * name;
    FrameKind kind;
    int flags;
    unsigned long long number;
    CString subject;
    MessageReference message;
    std::string bytes;
};

TEST(FrameWriterTest, WritesFramesByteByByte) {
    UsingCodePage const japanese(932);
    MessageReference const withFields = quote();
    withFields->header().setFieldValue("a", new NumberData(1LL));
    MessageReference const withFieldsAndSubject = quote();
    withFieldsAndSubject->header().setFieldValue("a", new NumberData(1LL));
    withFieldsAndSubject->header().setFieldValue("subject", new StringData("x"));
    MessageReference const withNumber = messageOf("q");
    withNumber->header().setFieldValue("subject", new NumberData(7203LL));
    MessageReference const withNull = messageOf("q");
    withNull->header().setFieldValue("subject", RefCountedPtr<FieldValue>());
    MessageReference const withIdentity = quote();
    withIdentity->header().setMessageKind(MSGKIND_REQUEST);
    withIdentity->header().setRequestId("17");
    MessageReference const list = MappedMessage::createListMessage(2);
    list->addSubMessage(withIdentity);
    list->addSubMessage(documentedNotice());
    MessageReference const oddKind = messageOf("[]");
    oddKind->addSubMessage(messageOf("x"));
    oddKind->getSubMessage(0)->header().setMessageKind(static_cast<MessageKindEnum>(4));

    std::string const body = "{\"last\":327}";
    Row const rows[] = {
        {"heartbeat", FRAME_HEARTBEAT, 0, 3, "", messageOf(""),
         hexBytes("00000014 12 00 0000 0000 0000 00000000 0000000000000003")},
        {"hello", FRAME_HELLO, 0, 0, "", quote(),
         hexBytes("00000025 10 00 0005 0000 0000 00000005 0000000000000000") + "quote" + body},
        {"request", FRAME_REQUEST, 0, 0x0102030405060708, "", quote(),
         hexBytes("00000025 01 00 0005 0000 0000 00000005 0102030405060708") + "quote" + body},
        {"failure", FRAME_REPLY, FRAME_FAILURE, 2, "", quote(),
         hexBytes("00000025 02 01 0005 0000 0000 00000005 0000000000000002") + "quote" + body},
        {"the other flags follow from the message", FRAME_REPLY, 0xfe, 2, "", quote(),
         hexBytes("00000025 02 00 0005 0000 0000 00000005 0000000000000002") + "quote" + body},
        {"subject", FRAME_NOTICE, 0, 1, "7203", quote(),
         hexBytes("00000029 03 00 0005 0004 0000 00000009 0000000000000001") + "quote7203" + body},
        {"subject of the header", FRAME_NOTICE, 0, 1, "", withFieldsAndSubject,
         hexBytes("00000031 03 02 0005 0001 0000 00000011 0000000000000001") + "quotex" +
             hexBytes("00000007") + "{\"a\":1}" + body},
        {"the given subject wins", FRAME_NOTICE, 0, 1, "7203", withFieldsAndSubject,
         hexBytes("00000034 03 02 0005 0004 0000 00000014 0000000000000001") + "quote7203" +
             hexBytes("00000007") + "{\"a\":1}" + body},
        {"number as subject", FRAME_NOTICE, 0, 1, "", withNumber,
         hexBytes("00000019 03 00 0001 0004 0000 00000005 0000000000000001") + "q7203"},
        {"null as subject", FRAME_NOTICE, 0, 1, "", withNull,
         hexBytes("00000015 03 00 0001 0000 0000 00000001 0000000000000001") + "q"},
        {"header fields", FRAME_NOTICE, 0, 1, "", withFields,
         hexBytes("00000030 03 02 0005 0000 0000 00000010 0000000000000001") + "quote" +
             hexBytes("00000007") + "{\"a\":1}" + body},
        {"Japanese", FRAME_NOTICE, 0, 1, CString(STOCK_932) + "x", messageOf(STOCK_932),
         hexBytes("0000001b 03 00 0003 0004 0000 00000007 0000000000000001") + STOCK_UTF8 +
             STOCK_UTF8 + "x"},
        {"kind and identifier do not travel", FRAME_NOTICE, 0, 1, "", withIdentity,
         hexBytes("00000025 03 00 0005 0000 0000 00000005 0000000000000001") + "quote" + body},
        {"sub-messages", FRAME_NOTICE, 0, 1, "", list,
         hexBytes("00000082 03 04 0002 0000 0000 0000006e 0000000000000001") + "[]" +
             hexBytes("00000002"
                      "00000029 01 08 0005 0000 0000 00000009 0000000000000000") +
             "quote" + hexBytes("0002") + "17" + body +
             hexBytes("00000037 00 00 0005 0004 0000 00000009 0000000000000000") +
             "quote7203{\"code\":\"7203\",\"last\":327}"},
        {"a kind that is none", FRAME_NOTICE, 0, 1, "", oddKind,
         hexBytes("00000033 03 04 0002 0000 0000 0000001f 0000000000000001") + "[]" +
             hexBytes("00000001 00000015 00 00 0001 0000 0000 00000001 0000000000000000") + "x"},
    };
    FrameWriter writer;
    for (Row const & row : rows) {
        SCOPED_TRACE(row.name);
        ErrorInfo error;
        EXPECT_EQ(std::string(writer.write(row.kind, row.flags, row.number, row.subject,
                                           *row.message, &error, LIMIT)),
                  row.bytes);
        EXPECT_FALSE(error.hasError()) << error.toString();
        EXPECT_EQ(contentByModel(row.bytes, LIMIT).frames.size(), 1U);
    }
}

/// The bytes of the dumps in a page: lines that begin with four blanks, four digits of a place, two
/// blanks and the bytes, up to the next two blanks. A place 0000 begins a new dump.
std::vector<std::string> dumpsIn(std::istream & page) {
    std::vector<std::string> dumps;
    for (std::string line; std::getline(page, line);) {
        bool const isDump = line.size() > 10 && line.compare(0, 4, "    ") == 0 &&
                            line.find_first_not_of("0123456789abcdef", 4) == 8 &&
                            line.compare(8, 2, "  ") == 0;
        if (!isDump) {
            continue;
        }
        if (line.compare(4, 4, "0000") == 0) {
            dumps.emplace_back();
        }
        EXPECT_EQ(hexBytes(line.substr(4, 4)), bigEndian(dumps.back().size(), 2)) << line;
        dumps.back() += hexBytes(line.substr(10, line.find("  ", 10) - 10));
    }
    return dumps;
}

TEST(FrameWriterTest, WritesWhatThePageOnFramesShows) {
    std::ifstream page(TVK_FRAMES_PAGE);
    std::vector<std::string> const dumps = dumpsIn(page);
    ASSERT_EQ(dumps.size(), 2U);
    FrameWriter writer;
    EXPECT_EQ(
        std::string(writer.write(FRAME_NOTICE, 0, 42, "", *documentedNotice(), nullptr, LIMIT)),
        dumps[0]);
    EXPECT_EQ(std::string(writer.write(FRAME_REPLY, 0, 7, "", *documentedReply(), nullptr, LIMIT)),
              dumps[1]);
}

struct Refused {
    char const * name;
    MessageReference message;
    CString subject;
    int code;
    char const * text;
    FrameKind kind = FRAME_NOTICE;
    int flags = 0;
};

MessageReference nested(int depth) {
    MessageReference message = messageOf("n");
    for (int i = 0; i < depth; ++i) {
        MessageReference const outer = messageOf("n");
        outer->addSubMessage(message);
        message = outer;
    }
    return message;
}

MessageReference around(MessageReference const & inner) {
    MessageReference const outer = messageOf("[]");
    outer->addSubMessage(quote());
    outer->addSubMessage(inner);
    return outer;
}

std::vector<Refused> refusedMessages() {
    RefCountedPtr<FieldValue> const raw(new RawDataImpl("raw", 3));
    MessageReference const rawBody = quote();
    rawBody->setFieldValue("r", raw);
    MessageReference const rawHeader = quote();
    rawHeader->header().setFieldValue("r", raw);
    MessageReference const rawSubject = quote();
    rawSubject->header().setFieldValue("subject", raw);
    MessageReference const recordSubject = quote();
    recordSubject->header().setFieldValue("subject", quote());
    MessageReference const badId = messageOf("x");
    badId->header().setRequestId(textOf(std::string_view("a\0b", 3)));
    MessageReference const longId = messageOf("x");
    longId->header().setRequestId(CString('i', 65'536));
    CString const withNul = textOf(std::string_view("\0", 1));
    CString const tooLong('q', 65'536);

    return {
        {"raw data", rawBody, "", BAD_DATA, "a value has no form on the wire: "},
        {"raw data in the header", rawHeader, "", BAD_DATA, "a value has no form on the wire: "},
        {"raw data within", around(rawBody), "", BAD_DATA, "a value has no form on the wire: "},
        {"raw data as subject", rawSubject, "", BAD_DATA,
         "the header's subject is no text but a value of type 4"},
        {"a record as subject", recordSubject, "", BAD_DATA,
         "the header's subject is no text but a value of type 3"},
        {"NUL in the type", messageOf(withNul), "", BAD_DATA, "the type of 1 bytes has a NUL"},
        {"NUL in the subject", quote(), withNul, BAD_DATA, "the subject of 1 bytes has a NUL"},
        {"NUL in an identifier", around(badId), "", BAD_DATA,
         "the request identifier of 3 bytes has a NUL"},
        {"a long type", messageOf(tooLong), "", BAD_SIZE,
         "the type has 65536 bytes, more than 65535"},
        {"a long subject", quote(), tooLong, BAD_SIZE,
         "the subject has 65536 bytes, more than 65535"},
        {"a long identifier", around(longId), "", BAD_SIZE,
         "the request identifier has 65536 bytes, more than 65535"},
        {"a null within", around(nullptr), "", BAD_DATA, "sub-message 1 is null"},
        {"nested too deep", nested(65), "", BAD_DATA, "sub-messages are nested more than 64 deep"},
        {"a failure that is no reply", quote(), "", BAD_FRAME,
         "a frame of kind 3 cannot be a failure", FRAME_NOTICE, FRAME_FAILURE},
        {"an unknown kind", quote(), "", BAD_FRAME, "unknown kind 4 of a frame",
         static_cast<FrameKind>(4)},
        {"kind 0", quote(), "", BAD_FRAME, "unknown kind 0 of a frame", static_cast<FrameKind>(0)},
        {"a kind above a byte", quote(), "", BAD_FRAME, "unknown kind 259 of a frame",
         static_cast<FrameKind>(259)},
    };
}

TEST(FrameWriterTest, SaysWhatItRefuses) {
    FrameWriter writer;
    for (Refused const & row : refusedMessages()) {
        SCOPED_TRACE(row.name);
        ErrorInfo error;
        EXPECT_TRUE(
            writer.write(row.kind, row.flags, 1, row.subject, *row.message, &error, LIMIT).empty());
        EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
        EXPECT_EQ(error.getErrorCode(), row.code);
        EXPECT_EQ(error.getErrorMessage().Find(row.text), 0) << error.toString();
        EXPECT_TRUE(writer.write(row.kind, row.flags, 1, row.subject, *row.message, nullptr, LIMIT)
                        .empty());
        // The next one is as ever.
        EXPECT_EQ(writer.write(FRAME_NOTICE, 0, 1, "", *quote(), nullptr, LIMIT).size(), 41U);
    }
}

TEST(FrameWriterTest, TakesTheLongestTextsAndTheDeepestNesting) {
    Road road;
    CString const longest('q', 65'535);
    MessageReference const message = messageOf(longest);
    MessageReference const inner = messageOf(longest);
    inner->header().setRequestId(longest);
    message->addSubMessage(inner);
    MessageReference const read = road.read(road.write(*message, longest));
    EXPECT_EQ(read->header().getMessageTypeId(), longest);
    EXPECT_EQ(read->header().getFieldValue("subject")->asString(), longest);
    EXPECT_EQ(read->getSubMessage(0)->header().getRequestId(), longest);

    MessageReference deepest = road.read(road.write(*nested(64)));
    int depth = 0;
    for (; deepest->getSubMessageCount() != 0; ++depth) {
        deepest = deepest->getSubMessage(0);
    }
    EXPECT_EQ(depth, 64);
}

TEST(FrameWriterTest, MeasuresTextsInUtf8) {
    UsingCodePage const japanese(932);
    CString text;
    for (int i = 0; i < 21'845; ++i) {
        text += STOCK_932;
    }
    FrameWriter writer;
    EXPECT_EQ(writer.write(FRAME_NOTICE, 0, 1, text, *messageOf(""), nullptr, LIMIT).size(),
              24U + 65'535U);
    ErrorInfo error;
    EXPECT_TRUE(
        writer.write(FRAME_NOTICE, 0, 1, text + "x", *messageOf(""), &error, LIMIT).empty());
    EXPECT_EQ(error.getErrorMessage(), "the subject has 65536 bytes, more than 65535");
}

/// Frames whose length is what it is told to be, one a way of growing.
std::vector<MessageReference> messagesOfLength(int length) {
    std::vector<MessageReference> messages;
    // {"a":"..."} behind the fixed part
    messages.push_back(messageOf(""));
    messages.back()->setFieldValue("a", CString('x', length - 20 - 8));
    // as header fields, with their size
    messages.push_back(messageOf(""));
    messages.back()->header().setFieldValue("a", CString('x', length - 20 - 4 - 8));
    // in a sub-message, with the count and a fixed part
    messages.push_back(messageOf(""));
    MessageReference const inner = messageOf("");
    inner->setFieldValue("a", CString('x', length - 20 - 4 - 24 - 8));
    messages.back()->addSubMessage(inner);
    // as the type
    messages.push_back(messageOf(CString('t', length - 20)));
    return messages;
}

TEST(FrameWriterTest, WritesTheLargestFrameAndNoLarger) {
    constexpr unsigned int SMALL_LIMIT = 300;
    FrameWriter writer;
    for (MessageReference const & message : messagesOfLength(SMALL_LIMIT)) {
        ErrorInfo error;
        EXPECT_EQ(writer.write(FRAME_NOTICE, 0, 1, "", *message, &error, SMALL_LIMIT).size(), 304U);
        EXPECT_FALSE(error.hasError()) << error.toString();
    }
    for (MessageReference const & message : messagesOfLength(SMALL_LIMIT + 1)) {
        ErrorInfo error;
        EXPECT_TRUE(writer.write(FRAME_NOTICE, 0, 1, "", *message, &error, SMALL_LIMIT).empty());
        EXPECT_EQ(error.getErrorCode(), BAD_SIZE);
        EXPECT_EQ(error.getErrorMessage(),
                  "a frame of length 301 or more, above 300 is not allowed");
    }
    EXPECT_TRUE(writer.write(FRAME_HEARTBEAT, 0, 1, "", *messageOf(""), nullptr, 19).empty());
    EXPECT_FALSE(writer.write(FRAME_HEARTBEAT, 0, 1, "", *messageOf(""), nullptr, 20).empty());
}

TEST(FrameWriterTest, EndsWhereSharedSubMessagesMultiply) {
    MessageReference message = messageOf("n");
    for (int i = 0; i < 60; ++i) {
        MessageReference const outer = messageOf("n");
        outer->addSubMessage(message);
        outer->addSubMessage(message);
        message = outer;
    }
    FrameWriter writer;
    ErrorInfo error;
    EXPECT_TRUE(writer.write(FRAME_NOTICE, 0, 1, "", *message, &error, 1U << 20U).empty());
    EXPECT_EQ(error.getErrorCode(), BAD_SIZE);
}

TEST(FrameWriterTest, RefusesAMessageWithinItself) {
    MessageReference const message = messageOf("n");
    message->addSubMessage(message);
    FrameWriter writer;
    ErrorInfo error;
    EXPECT_TRUE(writer.write(FRAME_NOTICE, 0, 1, "", *message, &error, LIMIT).empty());
    EXPECT_EQ(error.getErrorCode(), BAD_DATA);
    message->removeAllSubMessages();
}

TEST(FrameWriterTest, LosesNoEscapeWhereATextFillsTheRoomExactly) {
    for (int size = 4'050; size < 4'100; ++size) {
        MessageReference const message = messageOf("");
        CString const text('\n', size);
        message->setFieldValue("t", text);
        MessageReference const outer = messageOf("");
        outer->addSubMessage(message);
        outer->header().setFieldValue("t", text);
        Road road;
        EXPECT_EQ(road.read(road.write(*message))->getFieldValue("t")->asString(), text) << size;
        MessageReference const read = road.read(road.write(*outer));
        EXPECT_EQ(read->getSubMessage(0)->getFieldValue("t")->asString(), text) << size;
        EXPECT_EQ(read->header().getFieldValue("t")->asString(), text) << size;
    }
}

TEST(FrameWriterTest, LosesNoEscapeWhereTheRoomGrowsExactly) {
    for (int size : {100, 1'000, 9'000, 20'000}) {
        MessageReference const message = messageOf("");
        for (char const * name : {"a", "b", "c"}) {
            message->setFieldValue(name, CString('"', size));
            size *= 4;
        }
        Road road;
        EXPECT_TRUE(sameValue(road.read(road.write(*message)), message)) << size;
    }
}

/// Messages as the library reads them: what the wire cannot carry is left out.
class RandomMessages {
public:
    explicit RandomMessages(unsigned int seed)
        : values_(seed, {"a", "b", "name", "\"", "/", "\n", "1"}) {
        values_.leaveNullsOut();
    }

    MessageReference message(int depth) {
        MessageReference message = messageOf(text());
        addFields(*message);
        KestrinMessageHeader & header = message->header();
        if (values_.below(3) == 0) {
            addFields(header);
        }
        header.removeField("subject");
        if (values_.below(2) == 0) {
            header.setFieldValue("subject", text() + "7203");
        }
        for (unsigned int i = depth > 0 ? values_.below(4) : 0; i > 0; --i) {
            MessageReference const inner = this->message(depth - 1);
            inner->header().setMessageKind(static_cast<MessageKindEnum>(values_.below(4)));
            inner->header().setRequestId(text());
            message->addSubMessage(inner);
        }
        return message;
    }

    unsigned int below(unsigned int limit) { return values_.below(limit); }

private:
    void addFields(RecordData & record) {
        RefCountedPtr<RecordData> const fields = values_.record(3);
        for (RecordData::Field const & field : fields->getAllFields()) {
            record.setFieldValue(*field.name, field.value);
        }
        if (values_.below(2) == 0) {
            record.setFieldValue("japanese", text());
        }
    }

    CString text() {
        CString text = values_.below(3) == 0 ? CString(STOCK_932) : CString();
        text += values_.below(4) == 0 ? "\x93\xfa\x96\x7b" : "quote";
        return values_.below(8) == 0 ? CString() : text;
    }

    RandomValues values_;
};

TEST(FrameWriterTest, WritesWhatIsReadBackTheSame) {
    constexpr unsigned int SEED = 20'240'106;
    UsingCodePage const japanese(932);
    RandomMessages random(SEED);
    Road road;
    for (int i = 0; i < 500; ++i) {
        MessageReference const message = random.message(3);
        message->header().setMessageKind(MSGKIND_NOTICE);
        std::string const bytes = road.write(*message);
        MessageReference const read = road.read(bytes);
        ASSERT_TRUE(sameMessage(*read, *message)) << "message " << i << " of seed " << SEED;
        ASSERT_EQ(road.write(*read), bytes) << "message " << i << " of seed " << SEED;
        ASSERT_EQ(contentByModel(bytes, LIMIT).frames.size(), 1U);
    }
}

TEST(FrameWriterTest, AllocatesNothingOnceItIsWarm) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    UsingCodePage const japanese(932);
    MessageReference const message = quote();
    message->setFieldValue("name", CString(STOCK_932));
    message->setFieldValue("text", CString('\n', 5'000));
    message->header().setFieldValue("a", CString("1"));
    MessageReference const outer = messageOf(STOCK_932);
    outer->header().setFieldValue("subject", CString(STOCK_932));
    outer->addSubMessage(message);
    outer->addSubMessage(quote());
    outer->setFieldValue("text", CString('x', 9'000));
    FrameWriter writer;
    auto const write = [&](KestrinMessage const & written) {
        return writer.write(FRAME_NOTICE, 0, 1, STOCK_932, written, nullptr, LIMIT).size();
    };
    CString const subject = STOCK_932;
    for (KestrinMessage const * written : {message.get(), outer.get()}) {
        writer.write(FRAME_NOTICE, 0, 1, subject, *written, nullptr, LIMIT);
        AllocationCounter const allocations;
        for (int i = 0; i < 3; ++i) {
            writer.write(FRAME_NOTICE, 0, 1, subject, *written, nullptr, LIMIT);
        }
        EXPECT_EQ(allocations.count(), 0);
    }
    EXPECT_GT(write(*outer), 14'000U);
}

TEST(FrameWriterTest, KeepsNoRoomForWhatItRefused) {
    if (!HeapUse::available()) {
        GTEST_SKIP() << "the heap is not watched here";
    }
    MessageReference const big = messageOf("");
    big->setFieldValue("a", CString('x', 4 << 20));
    FrameWriter writer;
    HeapUse const use;
    EXPECT_TRUE(writer.write(FRAME_NOTICE, 0, 1, "", *big, nullptr, 1U << 20U).empty());
    MessageReference const outer = messageOf("");
    outer->addSubMessage(big);
    EXPECT_TRUE(writer.write(FRAME_NOTICE, 0, 1, "", *outer, nullptr, 1U << 20U).empty());
    EXPECT_LT(use.bytes(), 100'000);
}

TEST(FrameWriterTest, TakesAnyLimit) {
    FrameWriter writer;
    constexpr unsigned int LARGEST = std::numeric_limits<unsigned int>::max();
    EXPECT_EQ(writer.write(FRAME_NOTICE, 0, 1, "", *quote(), nullptr, LARGEST).size(), 41U);
    EXPECT_TRUE(writer.write(FRAME_NOTICE, 0, 1, "", *quote(), nullptr, 0).empty());
}

}  // namespace
