#include "modules/asio/FrameWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "modules/asio/FrameMessages.h"
#include "modules/asio/FrameReader.h"
#include "tests/support/FrameModel.h"
#include "tests/support/HexBytes.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/NumberData.h"

namespace {

using namespace tvk;
using namespace tvk::test;

constexpr unsigned int LIMIT = 16U << 20U;

TEST(FrameWriterTest, WritesARequestByteByByte) {
    RefCountedPtr<KestrinMessage> const message(new MappedMessage);
    message->header().setMessageTypeId("echo");
    message->setFieldValue("price", new NumberData(100LL));
    FrameWriter writer;
    ErrorInfo error;
    std::string_view const frame = writer.write(FRAME_REQUEST, 0, 7, "", *message, &error, LIMIT);
    EXPECT_EQ(std::string(frame), hexBytes("00000025 01 00 0004 0000 0000 00000004 0000000000000007"
                                           "6563686f") +
                                      "{\"price\":100}");
    EXPECT_FALSE(error.hasError());
}

TEST(FrameWriterTest, IsReadBack) {
    RefCountedPtr<KestrinMessage> const message(new MappedMessage);
    message->header().setMessageTypeId("quote");
    message->setFieldValue("price", new NumberData(100LL));
    FrameWriter writer;
    ErrorInfo error;
    std::string_view const bytes =
        writer.write(FRAME_NOTICE, 0, 12, "7203", *message, &error, LIMIT);
    FrameReader reader(LIMIT);
    std::copy(bytes.begin(), bytes.end(), reader.room(bytes.size()));
    reader.filled(bytes.size());
    Frame frame;
    ASSERT_EQ(reader.next(&frame, &error), FrameReader::Result::FRAME);
    EXPECT_EQ(frame.number, 12U);
    SimpleObjectCache cache(SimpleObjectCache::defaultRawDataConverter());
    FrameMessages messages(&cache);
    RefCountedPtr<KestrinMessage> const read = messages.read(frame, &error);
    ASSERT_FALSE(read.isNull()) << error.toString();
    EXPECT_EQ(read->header().getMessageTypeId(), "quote");
    EXPECT_EQ(read->header().getFieldValue("subject")->asString(), "7203");
    EXPECT_EQ(read->getFieldValue("price")->intValue(), 100);
}

}  // namespace
