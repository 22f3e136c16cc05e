#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "examples/inprocess_agent/FrameCodec.h"
#include "tests/support/PrintCString.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedMessageHeader.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/RawDataImpl.h"

namespace tvk::test {

using inprocess::FrameCodec;
using testing::HasSubstr;

namespace {

RefCountedPtr<KestrinMessage> quote() {
    RefCountedPtr<KestrinMessage> message(new MappedMessage);
    message->header().setMessageKind(MSGKIND_NOTICE);
    message->header().setMessageTypeId("quote");
    message->setFieldValue("sym", "3622");
    return message;
}

std::string written(FrameCodec & codec, KestrinMessage const & message) {
    ErrorInfo error;
    std::string const frame = codec.write(message.header(), message, &error);
    EXPECT_FALSE(error.hasError());
    return frame;
}

}  // namespace

TEST(InProcessFrameCodec, WritesHeadAndBodyInTwoLines) {
    FrameCodec codec;
    auto const message = quote();
    EXPECT_EQ(written(codec, *message), "{\"kind\":3,\"type\":\"quote\"}\n{\"sym\":\"3622\"}");

    message->header().setRequestId("7");
    message->header().setFieldValue("subject", "3622");
    EXPECT_EQ(written(codec, *message),
              "{\"fields\":{\"subject\":\"3622\"},\"id\":\"7\",\"kind\":3,\"type\":\"quote\"}\n"
              "{\"sym\":\"3622\"}");
}

TEST(InProcessFrameCodec, ReadsBackWhatItWrote) {
    FrameCodec near;
    FrameCodec far;
    auto const message = quote();
    message->header().setRequestId("1\n\"2");
    message->header().setMessageTypeId("\x82\xA0\n-");  // HIRAGANA A in the code page
    message->header().setFieldValue("kind", "of its own");
    message->header().setFieldValue("n", new NumberData(7));
    message->setFieldValue("sym", "\x82\xA0\n\n");

    ErrorInfo error;
    auto const read = far.read(written(near, *message), &error);
    ASSERT_TRUE(read);
    EXPECT_FALSE(error.hasError());
    EXPECT_EQ(read->header().getMessageKind(), MSGKIND_NOTICE);
    EXPECT_EQ(read->header().getRequestId(), "1\n\"2");
    EXPECT_EQ(read->header().getMessageTypeId(), "\x82\xA0\n-");
    EXPECT_EQ(read->header().getFieldCount(), 2U);
    EXPECT_EQ(read->header().getFieldValue("kind")->asString(), "of its own");
    EXPECT_EQ(read->header().getFieldValue("n")->intValue(), 7);
    EXPECT_EQ(read->getFieldCount(), 1U);
    EXPECT_EQ(read->getFieldValue("sym")->asString(), "\x82\xA0\n\n");
}

TEST(InProcessFrameCodec, RefusesWhatAFrameCannotCarry) {
    FrameCodec codec;
    ErrorInfo error;
    auto const list = MappedMessage::createListMessage(1);
    list->addSubMessage(quote());
    EXPECT_EQ(codec.write(list->header(), *list, &error), "");
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_UnsupportedFunction);
    EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);

    auto const raw = quote();
    raw->setFieldValue("raw", new RawDataImpl("x", 1));
    EXPECT_EQ(codec.write(raw->header(), *raw, &error), "");
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_InvalidMessageData);
    EXPECT_FALSE(error.getErrorMessage().IsEmpty());

    auto const message = quote();
    message->header().setFieldValue("raw", new RawDataImpl("x", 1));
    EXPECT_EQ(codec.write(message->header(), *message, &error), "");
    EXPECT_EQ(written(codec, *quote()), "{\"kind\":3,\"type\":\"quote\"}\n{\"sym\":\"3622\"}");
}

TEST(InProcessFrameCodec, RefusesABadHead) {
    struct Row {
        std::string_view frame;
        int code;
    };
    constexpr Row ROWS[] = {
        {"", KestrinConstants::ERR_InvalidMessageData},
        {"\n{}", KestrinConstants::ERR_InvalidMessageData},
        {"[]\n{}", KestrinConstants::ERR_InvalidMessageData},
        {"{\"kind\":1\n{}", KestrinConstants::ERR_InvalidMessageData},
        {"{}\n{}", KestrinConstants::ERR_ProtocolFailure},
        {"{\"kind\":1}\n{}", KestrinConstants::ERR_ProtocolFailure},
        {"{\"type\":\"a\"}\n{}", KestrinConstants::ERR_ProtocolFailure},
        {"{\"kind\":0,\"type\":\"a\"}\n{}", KestrinConstants::ERR_ProtocolFailure},
        {"{\"kind\":4,\"type\":\"a\"}\n{}", KestrinConstants::ERR_ProtocolFailure},
        {"{\"kind\":4294967297,\"type\":\"a\"}\n{}", KestrinConstants::ERR_ProtocolFailure},
        {"{\"kind\":[],\"type\":\"a\"}\n{}", KestrinConstants::ERR_ProtocolFailure},
        {"{\"kind\":1,\"type\":{}}\n{}", KestrinConstants::ERR_ProtocolFailure},
        {"{\"kind\":1,\"type\":\"\"}\n{}", KestrinConstants::ERR_ProtocolFailure},
    };
    for (Row const & row : ROWS) {
        SCOPED_TRACE(row.frame);
        FrameCodec codec;
        ErrorInfo error;
        EXPECT_EQ(codec.read(row.frame, &error), nullptr);
        EXPECT_EQ(error.getErrorCode(), row.code);
        EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
    }
}

TEST(InProcessFrameCodec, KeepsTheHeadOfABadBody) {
    for (std::string_view const body : {"", "\n", "\n[]", "\n{\"a\":", "\nno JSON"}) {
        SCOPED_TRACE(body);
        FrameCodec codec;
        ErrorInfo error;
        auto const message = codec.read(
            std::string("{\"id\":\"7\",\"kind\":2,\"type\":\"a\"}").append(body), &error);
        ASSERT_TRUE(message);
        EXPECT_EQ(message->header().getRequestId(), "7");
        EXPECT_EQ(message->getFieldCount(), 0U);
        EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_InvalidMessageData);
    }
}

TEST(InProcessFrameCodec, TakesOnlyWhatFitsOfAHead) {
    FrameCodec codec;
    ErrorInfo error;
    auto const message = codec.read("{\"fields\":[1],\"id\":[],\"kind\":2,\"type\":5}\n{}", &error);
    ASSERT_TRUE(message);
    EXPECT_FALSE(error.hasError());
    EXPECT_EQ(message->header().getRequestId(), "");
    EXPECT_EQ(message->header().getMessageTypeId(), "5");
    EXPECT_EQ(message->header().getFieldCount(), 0U);
}

}  // namespace tvk::test
