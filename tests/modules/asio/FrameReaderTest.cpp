#include "modules/asio/FrameReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/FrameModel.h"
#include "tests/support/FrameStream.h"
#include "tests/support/HeapUse.h"
#include "tests/support/HexBytes.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RandomFrames.h"

namespace {

using namespace tvk;
using namespace tvk::test;

using Result = FrameReader::Result;

constexpr unsigned int LIMIT = 16U << 20U;
constexpr int BAD_SIZE = KestrinConstants::ERR_InvalidMessageSize;
constexpr int BAD_FRAME = KestrinConstants::ERR_ProtocolFailure;

PlainFrame quote(std::string const & body = "{\"last\":327}") {
    PlainFrame frame;
    frame.kind = FRAME_NOTICE;
    frame.number = 5;
    frame.type = "quote";
    frame.subject = "7203";
    frame.body = body;
    return frame;
}

PlainFrame nested(int depth) {
    PlainFrame frame;
    frame.kind = 0;
    if (depth > 0) {
        frame.subMessages = {nested(depth - 1)};
    }
    return frame;
}

PlainFrame topNested(int depth) {
    PlainFrame frame = nested(depth);
    frame.kind = FRAME_NOTICE;
    return frame;
}

/// All parts that there are.
PlainFrame fullReply() {
    PlainFrame inner = quote();
    inner.kind = FRAME_REQUEST;
    inner.number = 0;
    inner.requestId = "id";
    inner.headerFields = "{}";
    PlainFrame frame = quote();
    frame.kind = FRAME_REPLY;
    frame.isFailure = true;
    frame.headerFields = "{\"h\":1}";
    frame.subMessages = {inner, nested(0), nested(1)};
    return frame;
}

StreamContent contentOf(std::string_view stream, unsigned int limit = LIMIT) {
    FrameReader reader(limit);
    feed(reader, stream);
    StreamContent content;
    takeFrames(reader, content);
    return content;
}

struct Row {
    char const * name;
    char const * hex;
    FrameCopy frame;
};

TEST(FrameReaderTest, ReadsFramesByteByByte) {
    Row const rows[] = {
        {"the smallest",
         "00000014 12 00 0000 0000 0000 00000000 0000000000000000",
         {FRAME_HEARTBEAT, 0, 0, "", "", "", "", ""}},
        {"all numbers",
         "00000014 13 00 0000 0000 0000 00000000 f0e1d2c3b4a59687",
         {FRAME_HEARTBEAT_ANSWER, 0, 0xf0e1d2c3b4a59687, "", "", "", "", ""}},
        {"request",
         "0000001a 01 00 0004 0000 0000 00000004 0000000000000007 6563686f 7b7d",
         {FRAME_REQUEST, 0, 7, "echo", "", "", "", "{}"}},
        {"failure",
         "00000016 02 01 0000 0000 0000 00000000 0000000000000007 7b7d",
         {FRAME_REPLY, FRAME_FAILURE, 7, "", "", "", "", "{}"}},
        {"notice",
         "00000019 03 00 0001 0002 0000 00000003 0000000000000001 71 3132 7b7d",
         {FRAME_NOTICE, 0, 1, "q", "12", "", "", "{}"}},
        {"header fields",
         "0000001d 03 02 0001 0000 0000 00000007 0000000000000001 71 00000002 7b7d 7b7d",
         {FRAME_NOTICE, FRAME_HEADER_FIELDS, 1, "q", "", "{}", "", "{}"}},
        {"no header fields",
         "00000018 03 02 0000 0000 0000 00000004 0000000000000001 00000000",
         {FRAME_NOTICE, FRAME_HEADER_FIELDS, 1, "", "", "", "", ""}},
        {"no sub-messages",
         "00000018 03 04 0000 0000 0000 00000004 0000000000000001 00000000",
         {FRAME_NOTICE, FRAME_SUB_MESSAGES, 1, "", "", "", std::string(4, '\0'), ""}},
        {"hello",
         "00000016 10 00 0000 0000 0000 00000000 0000000000000000 7b7d",
         {FRAME_HELLO, 0, 0, "", "", "", "", "{}"}},
        {"welcome",
         "00000016 11 00 0000 0000 0000 00000000 0000000000000000 7b7d",
         {FRAME_WELCOME, 0, 0, "", "", "", "", "{}"}},
        {"goodbye",
         "00000016 14 00 0000 0000 0000 00000000 0000000000000000 7b7d",
         {FRAME_GOODBYE, 0, 0, "", "", "", "", "{}"}},
        {"Japanese",
         "00000020 03 00 0006 0006 0000 0000000c 0000000000000001 e6a0aae4bea1 e697a5e69cac",
         {FRAME_NOTICE, 0, 1, "\xe6\xa0\xaa\xe4\xbe\xa1", "\xe6\x97\xa5\xe6\x9c\xac", "", "", ""}},
    };
    for (Row const & row : rows) {
        SCOPED_TRACE(row.name);
        StreamContent const content = contentOf(hexBytes(row.hex));
        EXPECT_EQ(content.errorCode, 0);
        EXPECT_EQ(content.pending, 0U);
        ASSERT_EQ(content.frames.size(), 1U);
        EXPECT_EQ(content.frames[0], row.frame);
    }
}

TEST(FrameReaderTest, FindsAllPartsOfAFrame) {
    PlainFrame const frame = fullReply();
    StreamContent const content = contentOf(bytesOf(frame));
    ASSERT_EQ(content.frames.size(), 1U);
    EXPECT_EQ(content.frames[0], copyOf(frame));
    EXPECT_EQ(content.frames[0].flags, FRAME_FAILURE | FRAME_HEADER_FIELDS | FRAME_SUB_MESSAGES);
}

struct Broken {
    char const * name;
    std::string bytes;
    int code;
    char const * text;
};

/// A top frame whose head ends with the count 1 and this sub-message.
std::string withInner(char const * hex) {
    std::string const inner = hexBytes(hex);
    std::string const head = bigEndian(1, 4) + inner;
    return bigEndian(20 + head.size(), 4) + hexBytes("03 04 0000 0000 0000") +
           bigEndian(head.size(), 4) + bigEndian(1, 8) + head;
}

std::vector<Broken> brokenFrames() {
    return {
        {"length 0", hexBytes("00000000"), BAD_SIZE,
         "the length of a frame is 0, neither below 20 nor above 16777216 is allowed"},
        {"length 19", hexBytes("00000013"), BAD_SIZE,
         "the length of a frame is 19, neither below 20 nor above 16777216 is allowed"},
        {"length above the limit", hexBytes("01000001"), BAD_SIZE,
         "the length of a frame is 16777217, neither below 20 nor above 16777216 is allowed"},
        {"the largest length", hexBytes("ffffffff"), BAD_SIZE,
         "the length of a frame is 4294967295, neither below 20 nor above 16777216 is allowed"},
        {"kind 0", hexBytes("00000014 00 00 0000 0000 0000 00000000 0000000000000000"), BAD_FRAME,
         "unknown kind 0 of a frame"},
        {"kind 4", hexBytes("00000014 04 00 0000 0000 0000 00000000 0000000000000000"), BAD_FRAME,
         "unknown kind 4 of a frame"},
        {"kind 15", hexBytes("00000014 0f 00 0000 0000 0000 00000000 0000000000000000"), BAD_FRAME,
         "unknown kind 15 of a frame"},
        {"kind 21", hexBytes("00000014 15 00 0000 0000 0000 00000000 0000000000000000"), BAD_FRAME,
         "unknown kind 21 of a frame"},
        {"kind 255", hexBytes("00000014 ff 00 0000 0000 0000 00000000 0000000000000000"), BAD_FRAME,
         "unknown kind 255 of a frame"},
        {"unknown flags", hexBytes("00000014 02 91 0000 0000 0000 00000000 0000000000000000"),
         BAD_FRAME, "a frame of kind 2 has no flags 144"},
        {"a failure that is no reply",
         hexBytes("00000014 03 01 0000 0000 0000 00000000 0000000000000000"), BAD_FRAME,
         "a frame of kind 3 has no flags 1"},
        {"a request identifier outside",
         hexBytes("00000016 01 08 0000 0000 0000 00000002 0000000000000000 0000"), BAD_FRAME,
         "a frame of kind 1 has no flags 8"},
        {"reserved bytes", hexBytes("00000014 01 00 0000 0000 0100 00000000 0000000000000000"),
         BAD_FRAME, "the reserved bytes of a frame are 256, not 0"},
        {"head above the frame",
         hexBytes("00000014 01 00 0000 0000 0000 00000001 0000000000000000"), BAD_FRAME,
         "a head of 1 bytes does not fit in a frame of length 20"},
        {"the largest head", hexBytes("00000014 01 00 0000 0000 0000 ffffffff 0000000000000000"),
         BAD_FRAME, "a head of 4294967295 bytes does not fit in a frame of length 20"},
        {"texts above the head",
         hexBytes("00000015 01 00 ffff ffff 0000 00000001 0000000000000000 71"), BAD_FRAME,
         "type and subject of 131070 bytes do not fit in a head of 1 bytes"},
        {"texts a byte above the head",
         hexBytes("00000015 01 00 0001 0001 0000 00000001 0000000000000000 71"), BAD_FRAME,
         "type and subject of 2 bytes do not fit in a head of 1 bytes"},
        {"a byte too many in the head",
         hexBytes("00000016 01 00 0001 0000 0000 00000002 0000000000000000 7171"), BAD_FRAME,
         "1 bytes of the head belong to nothing"},
        {"NUL in the type",
         hexBytes("00000016 01 00 0002 0000 0000 00000002 0000000000000000 7100"), BAD_FRAME,
         "the type of 2 bytes is not UTF-8 without NUL"},
        {"a cut character in the type",
         hexBytes("00000016 01 00 0002 0000 0000 00000002 0000000000000000 e6a0"), BAD_FRAME,
         "the type of 2 bytes is not UTF-8 without NUL"},
        {"a bad subject", hexBytes("00000016 01 00 0001 0001 0000 00000002 0000000000000000 7180"),
         BAD_FRAME, "the subject of 1 bytes is not UTF-8 without NUL"},
        {"no size of header fields",
         hexBytes("00000017 01 02 0000 0000 0000 00000003 0000000000000000 000000"), BAD_FRAME,
         "header fields: 4 bytes do not fit in the 3 bytes left of the head"},
        {"header fields above the head",
         hexBytes("0000001a 01 02 0000 0000 0000 00000006 0000000000000000 00000003 7b7d"),
         BAD_FRAME, "header fields: 3 bytes do not fit in the 2 bytes left of the head"},
        {"the largest header fields",
         hexBytes("0000001a 01 02 0000 0000 0000 00000006 0000000000000000 ffffffff 7b7d"),
         BAD_FRAME, "header fields: 4294967295 bytes do not fit in the 2 bytes left of the head"},
        {"header fields that end too early",
         hexBytes("0000001a 01 02 0000 0000 0000 00000006 0000000000000000 00000001 7b7d"),
         BAD_FRAME, "1 bytes of the head belong to nothing"},
        {"no count of sub-messages",
         hexBytes("00000017 01 04 0000 0000 0000 00000003 0000000000000000 000000"), BAD_FRAME,
         "3 bytes are no count of sub-messages"},
        {"nothing where the count should be",
         hexBytes("00000014 01 04 0000 0000 0000 00000000 0000000000000000"), BAD_FRAME,
         "0 bytes are no count of sub-messages"},
        {"fewer sub-messages than counted",
         hexBytes("00000018 01 04 0000 0000 0000 00000004 0000000000000000 ffffffff"), BAD_FRAME,
         "a sub-message does not fit in the 0 bytes left"},
        {"bytes behind the sub-messages",
         hexBytes("00000019 01 04 0000 0000 0000 00000005 0000000000000000 00000000 00"), BAD_FRAME,
         "1 bytes stand behind the last sub-message"},
        {"a cut sub-message", withInner("00000014 01 00 0000 0000 0000 00000000 00000000000000"),
         BAD_FRAME, "a sub-message does not fit in the 23 bytes left"},
        {"a short sub-message",
         withInner("00000013 01 00 0000 0000 0000 00000000 0000000000000000"), BAD_FRAME,
         "a sub-message of length 19 is too short or does not fit in the 24 bytes left"},
        {"a long sub-message", withInner("00000015 01 00 0000 0000 0000 00000000 0000000000000000"),
         BAD_FRAME, "a sub-message of length 21 is too short or does not fit in the 24 bytes left"},
        {"the longest sub-message",
         withInner("ffffffff 01 00 0000 0000 0000 00000000 0000000000000000"), BAD_FRAME,
         "a sub-message of length 4294967295 is too short or does not fit in the 24 bytes left"},
        {"a greeting within", withInner("00000014 10 00 0000 0000 0000 00000000 0000000000000000"),
         BAD_FRAME, "unknown kind 16 of a sub-message"},
        {"kind 4 within", withInner("00000014 04 00 0000 0000 0000 00000000 0000000000000000"),
         BAD_FRAME, "unknown kind 4 of a sub-message"},
        {"a failure within", withInner("00000014 02 01 0000 0000 0000 00000000 0000000000000000"),
         BAD_FRAME, "a sub-message of kind 2 has no flags 1"},
        {"a number within", withInner("00000014 02 00 0000 0000 0000 00000000 0000000000000001"),
         BAD_FRAME, "the number of a sub-message is 1, not 0"},
        {"reserved bytes within",
         withInner("00000014 02 00 0000 0000 0001 00000000 0000000000000000"), BAD_FRAME,
         "the reserved bytes of a sub-message are 1, not 0"},
        {"a head above the sub-message",
         withInner("00000014 02 00 0000 0000 0000 00000001 0000000000000000"), BAD_FRAME,
         "a head of 1 bytes does not fit in a sub-message of length 20"},
        {"no size of a request identifier",
         withInner("00000015 02 08 0000 0000 0000 00000001 0000000000000000 00"), BAD_FRAME,
         "request identifier: 2 bytes do not fit in the 1 bytes left of the head"},
        {"a request identifier above the head",
         withInner("00000017 02 08 0000 0000 0000 00000003 0000000000000000 0002 69"), BAD_FRAME,
         "request identifier: 2 bytes do not fit in the 1 bytes left of the head"},
        {"a bad request identifier",
         withInner("00000017 02 08 0000 0000 0000 00000003 0000000000000000 0001 ff"), BAD_FRAME,
         "the request identifier of 1 bytes is not UTF-8 without NUL"},
        {"nested too deep", bytesOf(topNested(65)), BAD_FRAME,
         "sub-messages are nested more than 64 deep"},
    };
}

TEST(FrameReaderTest, SaysWhatIsWrong) {
    for (Broken const & row : brokenFrames()) {
        SCOPED_TRACE(row.name);
        FrameReader reader(LIMIT);
        feed(reader, row.bytes);
        Frame frame;
        ErrorInfo error;
        // The stream has lost its step for good.
        for (int i = 0; i < 2; ++i) {
            error = ErrorInfo();
            EXPECT_EQ(reader.next(&frame, &error), Result::BROKEN);
            EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
            EXPECT_EQ(error.getErrorCode(), row.code);
            EXPECT_EQ(error.getErrorMessage(), row.text);
            EXPECT_EQ(reader.pendingBytes(), row.bytes.size());
        }
        EXPECT_EQ(reader.next(&frame, nullptr), Result::BROKEN);
        EXPECT_EQ(contentByModel(row.bytes, LIMIT).errorCode, row.code);
    }
}

TEST(FrameReaderTest, SeesABrokenFrameAsSoonAsItsStartIsThere) {
    for (Broken const & row : brokenFrames()) {
        SCOPED_TRACE(row.name);
        std::size_t const start = row.bytes.size() < 24 ? 4 : 24;
        bool const isInStart = contentByModel(row.bytes.substr(0, start), LIMIT).errorCode != 0;
        EXPECT_EQ(contentOf(row.bytes.substr(0, start)).errorCode, isInStart ? row.code : 0);
        EXPECT_EQ(contentOf(row.bytes.substr(0, start - 1)).errorCode, 0);
    }
}

TEST(FrameReaderTest, TakesTheDeepestNesting) {
    EXPECT_EQ(contentOf(bytesOf(topNested(64))).frames.size(), 1U);
}

struct TextRow {
    char const * name;
    char const * bytes;
    bool isText;
};

TEST(FrameReaderTest, WantsTextsInUtf8) {
    constexpr TextRow ROWS[] = {
        {"ASCII of more than a block", "abcdefghijklmnopq~\x01\x7f", true},
        {"first of two bytes", "\xc2\x80", true},
        {"too long for one byte", "\xc1\xbf", false},
        {"last of two bytes", "\xdf\xbf", true},
        {"a lead alone", "abcdefgh\xc2", false},
        {"a lead before ASCII", "\xc2x", false},
        {"a trail alone", "\x80", false},
        {"first of three bytes", "\xe0\xa0\x80", true},
        {"too long for two bytes", "\xe0\x9f\xbf", false},
        {"before the halves of pairs", "\xed\x9f\xbf", true},
        {"half of a pair", "\xed\xa0\x80", false},
        {"last of three bytes", "\xef\xbf\xbf", true},
        {"two of three bytes", "\xe6\xa0", false},
        {"a third byte that is no trail", "\xe6\xa0x", false},
        {"first of four bytes", "\xf0\x90\x80\x80", true},
        {"too long for three bytes", "\xf0\x8f\xbf\xbf", false},
        {"last of four bytes", "\xf4\x8f\xbf\xbf", true},
        {"beyond the last", "\xf4\x90\x80\x80", false},
        {"a lead of no character", "\xf5\x80\x80\x80", false},
        {"three of four bytes", "\xf1\x80\x80", false},
        {"a fourth byte that is no trail", "\xf1\x80\x80x", false},
        {"the byte 255", "\xff", false},
    };
    for (TextRow const & row : ROWS) {
        SCOPED_TRACE(row.name);
        PlainFrame frame = quote();
        frame.type = row.bytes;
        EXPECT_EQ(contentOf(bytesOf(frame)).frames.size(), row.isText ? 1U : 0U);
        EXPECT_EQ(FrameModel::isText(row.bytes), row.isText);
    }
}

TEST(FrameReaderTest, FindsANulAtEveryPlaceOfAText) {
    for (std::size_t size = 1; size < 40; ++size) {
        for (std::size_t at = 0; at < size; ++at) {
            PlainFrame frame = quote();
            frame.type = std::string(size, 'q');
            frame.type[at] = '\0';
            EXPECT_EQ(contentOf(bytesOf(frame)).errorCode, BAD_FRAME) << at << " of " << size;
        }
    }
}

TEST(FrameReaderTest, NeedsMoreForEveryPrefixOfAFrame) {
    std::string const bytes = bytesOf(fullReply());
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        FrameReader reader(LIMIT);
        feed(reader, std::string_view(bytes).substr(0, size));
        Frame frame;
        frame.number = 77;
        ErrorInfo error;
        EXPECT_EQ(reader.next(&frame, &error), Result::NEED_MORE) << size;
        EXPECT_EQ(frame.number, 77U);
        EXPECT_FALSE(error.hasError());
        EXPECT_EQ(reader.pendingBytes(), size);
    }
}

TEST(FrameReaderTest, ReadsTheSameHoweverTheBytesCome) {
    PlainFrame const frames[] = {quote(), fullReply(), quote("")};
    std::string stream;
    for (PlainFrame const & frame : frames) {
        stream += bytesOf(frame);
    }
    StreamContent const whole = contentOf(stream);
    ASSERT_EQ(whole.frames.size(), 3U);
    for (std::size_t at = 0; at <= stream.size(); ++at) {
        FrameReader reader(LIMIT);
        StreamContent content;
        feed(reader, std::string_view(stream).substr(0, at));
        takeFrames(reader, content);
        feed(reader, std::string_view(stream).substr(at));
        takeFrames(reader, content);
        EXPECT_EQ(content, whole) << at;
    }
    FrameReader reader(LIMIT);
    StreamContent content;
    for (char const byte : stream) {
        feed(reader, {&byte, 1});
        takeFrames(reader, content);
    }
    EXPECT_EQ(content, whole);
}

TEST(FrameReaderTest, ReadsManyFramesOutOfOneFilling) {
    std::string stream;
    for (unsigned long long i = 0; i < 10'000; ++i) {
        PlainFrame frame = quote();
        frame.number = i;
        stream += bytesOf(frame);
    }
    StreamContent const content = contentOf(stream);
    ASSERT_EQ(content.frames.size(), 10'000U);
    for (std::size_t i = 0; i < content.frames.size(); ++i) {
        ASSERT_EQ(content.frames[i].number, i);
    }
}

TEST(FrameReaderTest, TakesTheLargestFrameAndNoLarger) {
    constexpr unsigned int SMALL_LIMIT = 1000;
    for (unsigned int length : {999U, 1000U, 1001U}) {
        PlainFrame frame = quote("");
        frame.body = std::string(length + 4 - bytesOf(frame).size(), ' ');
        std::string const bytes = bytesOf(frame);
        ASSERT_EQ(bytes.size(), length + 4U);
        StreamContent const content = contentOf(bytes, SMALL_LIMIT);
        EXPECT_EQ(content.frames.size(), length <= SMALL_LIMIT ? 1U : 0U);
        EXPECT_EQ(content.errorCode, length <= SMALL_LIMIT ? 0 : BAD_SIZE);
    }
    EXPECT_EQ(contentOf(bytesOf(nested(0)), 19).errorCode, BAD_SIZE);
    PlainFrame heartbeat;
    heartbeat.kind = FRAME_HEARTBEAT;
    EXPECT_EQ(contentOf(bytesOf(heartbeat), 20).frames.size(), 1U);
}

TEST(FrameReaderTest, AgreesWithThePlainModel) {
    constexpr unsigned int SEED = 20'240'105;
    constexpr unsigned int SMALL_LIMIT = 400;
    RandomFrames random(SEED);
    int broken = 0;
    for (int i = 0; i < 5'000; ++i) {
        std::string stream;
        for (unsigned int count = random.below(5); count > 0; --count) {
            stream += bytesOf(random.frame());
        }
        stream += random.below(2) == 0 ? random.spoilt(random.frame()) : std::string();
        stream += bytesOf(random.frame());
        stream.resize(stream.size() - random.below(8));
        StreamContent const wanted = contentByModel(stream, SMALL_LIMIT);
        broken += wanted.errorCode != 0 ? 1 : 0;

        FrameReader reader(SMALL_LIMIT);
        StreamContent content;
        for (std::string_view rest = stream; !rest.empty();) {
            std::string_view const part = rest.substr(0, 1 + random.below(300));
            rest.remove_prefix(part.size());
            feed(reader, part);
            takeFrames(reader, content);
        }
        ASSERT_EQ(content, wanted) << "stream " << i << " of seed " << SEED;
    }
    EXPECT_GT(broken, 500);
    EXPECT_LT(broken, 4'500);
}

TEST(FrameReaderTest, GivesViewsIntoItsRoom) {
    FrameReader reader(LIMIT);
    std::string const bytes = bytesOf(quote());
    char const * const room = reader.room(2 * bytes.size());
    std::copy(bytes.begin(), bytes.end(), reader.room(2 * bytes.size()));
    EXPECT_GE(reader.roomSize(), 2 * bytes.size());
    reader.filled(bytes.size());
    Frame frame;
    ASSERT_EQ(reader.next(&frame, nullptr), Result::FRAME);
    EXPECT_EQ(frame.type.data(), room + 24);
    EXPECT_EQ(frame.body.data(), room + bytes.size() - frame.body.size());
}

TEST(FrameReaderTest, KeepsFramesAndRoomUntilItIsAskedForRoomAgain) {
    FrameReader reader(LIMIT);
    std::string const bytes = bytesOf(quote());
    feed(reader, bytes + bytes);
    // A read is under way into this room while the frames in front of it are taken.
    char * const room = reader.room(bytes.size());
    std::size_t const size = reader.roomSize();
    Frame first;
    Frame second;
    Frame third;
    ASSERT_EQ(reader.next(&first, nullptr), Result::FRAME);
    ASSERT_EQ(reader.next(&second, nullptr), Result::FRAME);
    ASSERT_EQ(reader.next(&third, nullptr), Result::NEED_MORE);
    EXPECT_EQ(reader.roomSize(), size);
    std::copy(bytes.begin(), bytes.end(), room);
    reader.filled(bytes.size());
    ASSERT_EQ(reader.next(&third, nullptr), Result::FRAME);
    for (Frame const * frame : {&first, &second, &third}) {
        EXPECT_EQ(copyOf(*frame), copyOf(quote()));
    }
}

TEST(FrameReaderTest, AllocatesNothingOnceItIsWarm) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    std::string stream;
    for (int i = 0; i < 100; ++i) {
        stream += bytesOf(fullReply());
    }
    FrameReader reader(LIMIT);
    feed(reader, stream);
    Frame frame;
    AllocationCounter const allocations;
    int frames = 0;
    for (int i = 0; i < 100; ++i) {
        while (reader.next(&frame, nullptr) == Result::FRAME) {
            ++frames;
        }
        // Leaves the start of a frame behind, so that the buffer has to move it down at its end.
        feed(reader, i == 0 ? std::string_view(stream).substr(0, stream.size() - 10)
                            : std::string_view(stream).substr(stream.size() - 10));
        feed(reader,
             i == 0 ? std::string_view() : std::string_view(stream).substr(0, stream.size() - 10));
    }
    EXPECT_EQ(allocations.count(), 0);
    EXPECT_GT(frames, 9'000);
}

TEST(FrameReaderTest, GrowsWithWhatCameAndNotWithWhatIsAnnounced) {
    if (!HeapUse::available()) {
        GTEST_SKIP() << "the heap is not watched here";
    }
    HeapUse const use;
    FrameReader reader(LIMIT);
    feed(reader, hexBytes("01000000 03 00 0000 0000 0000 00000000 0000000000000000"));
    Frame frame;
    EXPECT_EQ(reader.next(&frame, nullptr), Result::NEED_MORE);
    EXPECT_LT(use.peak(), 200'000);
    std::string const block(4096, ' ');
    for (int i = 0; i < 100; ++i) {
        feed(reader, block);
        EXPECT_EQ(reader.next(&frame, nullptr), Result::NEED_MORE);
    }
    EXPECT_LT(use.bytes(), 1'000'000);
}

TEST(FrameReaderTest, GivesTheRoomForABigFrameBack) {
    if (!HeapUse::available()) {
        GTEST_SKIP() << "the heap is not watched here";
    }
    HeapUse const use;
    FrameReader reader(LIMIT);
    std::string const big = bytesOf(quote(std::string(8U << 20U, ' ')));
    for (std::string_view rest = big; !rest.empty();) {
        feed(reader, rest.substr(0, 65'536));
        rest.remove_prefix(std::min<std::size_t>(rest.size(), 65'536));
    }
    Frame frame;
    ASSERT_EQ(reader.next(&frame, nullptr), Result::FRAME);
    EXPECT_EQ(frame.body.size(), 8U << 20U);
    long long const copy = static_cast<long long>(big.size());
    EXPECT_GT(use.bytes(), 2 * copy);
    std::string const bytes = bytesOf(quote());
    for (int i = 0; i < 100; ++i) {
        feed(reader, bytes);
        ASSERT_EQ(reader.next(&frame, nullptr), Result::FRAME);
    }
    EXPECT_LT(use.bytes(), copy + 300'000);
}

TEST(FrameReaderTest, MovesWhatIsPendingSeldom) {
    FrameReader reader(LIMIT);
    std::string const body(500, 'x');
    std::string bytes = bytesOf(quote(body));
    // Frames are taken slower than they come until almost 4 MB wait, which almost fill a buffer that
    // has doubled; from then on as fast.
    constexpr std::size_t MOST = (4U << 20U) - (64U << 10U);
    std::size_t came = 0;
    std::size_t moved = 0;
    unsigned long long taken = 0;
    char const * room = reader.room(bytes.size());
    Frame frame;
    for (unsigned long long number = 0; came < 24U << 20U; ++number) {
        bytes.replace(16, 8, bigEndian(number, 8));
        feed(reader, bytes);
        came += bytes.size();
        if (reader.pendingBytes() > MOST) {
            ASSERT_EQ(reader.next(&frame, nullptr), Result::FRAME);
            ASSERT_EQ(frame.number, taken);
            ASSERT_EQ(frame.body, body);
            ++taken;
        }
        std::size_t const pending = reader.pendingBytes();
        char const * const next = reader.room(bytes.size());
        moved += next == room + bytes.size() ? 0 : pending;
        room = next;
    }
    EXPECT_LT(moved, 2 * came);
    while (reader.next(&frame, nullptr) == Result::FRAME) {
        ASSERT_EQ(frame.number, taken);
        ASSERT_EQ(frame.body, body);
        ++taken;
    }
    EXPECT_EQ(taken * bytes.size(), came);
}

TEST(FrameReaderTest, RefusesRoomThatNothingCanHave) {
    FrameReader reader(LIMIT);
    feed(reader, "x");
    EXPECT_THROW(reader.room(static_cast<std::size_t>(-1)), std::bad_alloc);
    EXPECT_EQ(reader.pendingBytes(), 1U);
}

}  // namespace
