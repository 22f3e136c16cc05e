#include "tvk/values/MappedMessage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RecordDataDouble.h"
#include "tests/support/Recorded.h"
#include "tests/support/VirtualOrder.h"
#include "tests/values/ExpectTooLong.h"
#include "tvk/values/MappedMessageHeader.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"

namespace tvk {
namespace {

using test::expectTooLong;
using test::Log;
using test::Recorded;
using test::slotOf;
using Message = RefCountedPtr<MappedMessage>;
using AnyMessage = RefCountedPtr<KestrinMessage>;
using Value = RefCountedPtr<FieldValue>;
using Pointers = std::vector<KestrinMessage const *>;

static_assert(!std::is_destructible_v<MappedMessage>);

Pointers subMessagesOf(KestrinMessage const & message) {
    Pointers pointers;
    for (unsigned int i = 0; i < message.getSubMessageCount(); ++i) {
        pointers.push_back(message.getSubMessage(i).get());
    }
    return pointers;
}

Message messageWith(std::vector<AnyMessage> const & subMessages) {
    Message const message(new MappedMessage);
    for (AnyMessage const & subMessage : subMessages) {
        message->addSubMessage(subMessage);
    }
    return message;
}

/// Five sub-messages, a field and a header that says something.
Message fullMessage() {
    Message const message(new MappedMessage);
    message->setFieldValue("x", "1");
    message->header().setMessageKind(MSGKIND_REPLY);
    message->header().setMessageTypeId("Quote");
    message->header().setRequestId("17");
    message->header().setFieldValue("h", "2");
    message->addSubMessage(new MappedMessage);
    message->addSubMessage(new MappedMessage);
    return message;
}

void expectFreshHeader(KestrinMessageHeader const & header) {
    EXPECT_EQ(header.getMessageKind(), MessageKindEnum{});
    EXPECT_EQ(header.getMessageTypeId(), "");
    EXPECT_EQ(header.getRequestId(), "");
    EXPECT_EQ(header.getFieldCount(), 0u);
    EXPECT_EQ(header.getRefCount(), 1);
}

class MappedMessageTest : public testing::Test {
protected:
    AnyMessage const p_ = new MappedMessage;
    AnyMessage const q_ = new MappedMessage;
    AnyMessage const r_ = new MappedMessage;
};

TEST_F(MappedMessageTest, StartsWithAFreshHeaderAndNothingElse) {
    Message const message(new MappedMessage);
    EXPECT_EQ(message->getFieldCount(), 0u);
    EXPECT_EQ(message->getSubMessageCount(), 0u);
    expectFreshHeader(message->header());
    EXPECT_EQ(&std::as_const(*message).header(), &message->header());
    EXPECT_NE(dynamic_cast<MappedMessageHeader *>(&message->header()), nullptr);
    message->removeAllSubMessages();
    message->removeSubMessage(p_.get());
    message->removeSubMessage(nullptr);
    EXPECT_EQ(message->getSubMessageCount(), 0u);
}

TEST_F(MappedMessageTest, ListMessagesHaveTheirOwnType) {
    EXPECT_EQ(KestrinMessage::MSGTYPE_LIST_MESSAGE, "[]");
    for (unsigned int const count : {0u, 1u, 50u}) {
        AnyMessage const message = MappedMessage::createListMessage(count);
        EXPECT_EQ(message->getRefCount(), 1);
        EXPECT_EQ(message->getSubMessageCount(), 0u);
        EXPECT_EQ(message->header().getMessageTypeId(), "[]");
        EXPECT_EQ(message->header().getRequestId(), "");
        EXPECT_EQ(message->header().getMessageKind(), MessageKindEnum{});
        EXPECT_NE(dynamic_cast<MappedMessage *>(message.get()), nullptr);
        // Its vector is there already, so these are allowed without an addition before.
        message->removeSubMessages(0, 5);
    }
}

TEST_F(MappedMessageTest, ListMessagesReserveTheirPlaces) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    AnyMessage const message = MappedMessage::createListMessage(50);
    test::AllocationCounter const allocations;
    for (int i = 0; i < 50; ++i) {
        message->addSubMessage(p_);
    }
    EXPECT_EQ(allocations.count(), 0);
}

TEST_F(MappedMessageTest, AddsAndInsertsCountedReferences) {
    Message const message(new MappedMessage);
    message->insertSubMessageAt(0, q_);
    message->addSubMessage(r_);
    message->insertSubMessageAt(0, p_);
    message->insertSubMessageAt(3, p_);
    message->addSubMessage(AnyMessage());
    EXPECT_EQ(subMessagesOf(*message), (Pointers{p_.get(), q_.get(), r_.get(), p_.get(), nullptr}));
    EXPECT_EQ(p_->getRefCount(), 3);
    EXPECT_EQ(q_->getRefCount(), 2);
    {
        AnyMessage const got = message->getSubMessage(1);
        EXPECT_EQ(got, q_);
        EXPECT_EQ(q_->getRefCount(), 3);
    }
    EXPECT_EQ(message->getFieldCount(), 0u);
    message->removeAllSubMessages();
    EXPECT_EQ(message->getSubMessageCount(), 0u);
    EXPECT_EQ(p_->getRefCount(), 1);
    message->addSubMessage(q_);
    EXPECT_EQ(subMessagesOf(*message), Pointers{q_.get()});
}

TEST_F(MappedMessageTest, RemovesOneByItsPlace) {
    Message const message = messageWith({p_, q_, r_, p_});
    message->removeSubmessageAt(1);
    EXPECT_EQ(subMessagesOf(*message), (Pointers{p_.get(), r_.get(), p_.get()}));
    EXPECT_EQ(q_->getRefCount(), 1);
    message->removeSubmessageAt(2);
    message->removeSubmessageAt(0);
    EXPECT_EQ(subMessagesOf(*message), Pointers{r_.get()});
    EXPECT_EQ(p_->getRefCount(), 1);
}

TEST_F(MappedMessageTest, DeliberateRemovingPassesOverTheOneThatMovesUp) {
    Message const adjacent = messageWith({p_, p_, q_});
    adjacent->removeSubMessage(p_.get());
    EXPECT_EQ(subMessagesOf(*adjacent), (Pointers{p_.get(), q_.get()}));
    Message const apart = messageWith({p_, q_, p_});
    apart->removeSubMessage(p_.get());
    EXPECT_EQ(subMessagesOf(*apart), Pointers{q_.get()});
}

TEST_F(MappedMessageTest, RemovingFollowsAPlainModelOnAllShortPatterns) {
    AnyMessage const choices[] = {p_, q_, AnyMessage()};
    for (unsigned int length = 0; length <= 7; ++length) {
        unsigned int patterns = 1;
        for (unsigned int i = 0; i < length; ++i) {
            patterns *= 3;
        }
        for (unsigned int pattern = 0; pattern < patterns; ++pattern) {
            std::vector<AnyMessage> messages;
            for (unsigned int i = 0, rest = pattern; i < length; ++i, rest /= 3) {
                messages.push_back(choices[rest % 3]);
            }
            for (KestrinMessage const * wanted :
                 {p_.get(), static_cast<KestrinMessage *>(nullptr)}) {
                // The one behind a removed one stays, whatever it is.
                Pointers expected;
                bool removedBefore = false;
                for (AnyMessage const & each : messages) {
                    removedBefore = each == wanted && !removedBefore;
                    if (!removedBefore) {
                        expected.push_back(each.get());
                    }
                }
                Message const message = messageWith(messages);
                message->removeSubMessage(wanted);
                ASSERT_EQ(subMessagesOf(*message), expected) << length << " " << pattern;
                messages.shrink_to_fit();
                auto const inVector = std::count(messages.begin(), messages.end(), p_);
                auto const inMessage = std::count(expected.begin(), expected.end(), p_.get());
                ASSERT_EQ(p_->getRefCount(), 2 + inVector + inMessage);
            }
        }
    }
}

TEST_F(MappedMessageTest, RemovingMayEndTheMessageThatIsLookedFor) {
    Log log;
    auto * const subMessage = new Recorded<MappedMessage>(&log, "sub");
    Message const message = messageWith({q_});
    message->addSubMessage(AnyMessage(subMessage));
    message->addSubMessage(r_);
    message->addSubMessage(p_);
    message->removeSubMessage(subMessage);
    EXPECT_EQ(log, (Log{"end sub", "gone sub"}));
    EXPECT_EQ(subMessagesOf(*message), (Pointers{q_.get(), r_.get(), p_.get()}));
}

TEST_F(MappedMessageTest, RemovesARangeClippedAtTheEnd) {
    std::vector<AnyMessage> five;
    for (int i = 0; i < 5; ++i) {
        five.push_back(new MappedMessage);
    }
    for (unsigned int length = 0; length <= 5; ++length) {
        std::vector<AnyMessage> const messages(five.begin(), five.begin() + length);
        for (unsigned int first = 0; first <= length; ++first) {
            for (unsigned int const count : {0u, 1u, 2u, 3u, 4u, 5u, 100u, 0x7fffffffu, 0xfffffffbu,
                                             0xfffffffeu, 0xffffffffu}) {
                Message const message(new MappedMessage);
                message->addSubMessage(p_);
                message->removeAllSubMessages();
                for (AnyMessage const & each : messages) {
                    message->addSubMessage(each);
                }
                Pointers expected;
                for (unsigned int i = 0; i < length; ++i) {
                    if (i < first || i - first >= count) {
                        expected.push_back(messages[i].get());
                    }
                }
                message->removeSubMessages(first, count);
                ASSERT_EQ(subMessagesOf(*message), expected)
                    << length << " " << first << " " << count;
            }
        }
    }
    for (AnyMessage const & each : five) {
        EXPECT_EQ(each->getRefCount(), 1);
    }
}

// ---- Copies and assignments ------------------------------------------------------------------

TEST_F(MappedMessageTest, AFullCopyTakesTheHeaderToo) {
    Message const source = fullMessage();
    Message const second(source);
    auto * const object = new MappedMessage(*source);
    EXPECT_EQ(object->getRefCount(), 0);
    Message const copy(object);
    EXPECT_EQ(copy->getFieldValue("x"), source->getFieldValue("x"));
    EXPECT_NE(&copy->header(), &source->header());
    EXPECT_EQ(copy->header().getRefCount(), 1);
    EXPECT_TRUE(dynamic_cast<MappedMessageHeader &>(copy->header()) == source->header());
    EXPECT_EQ(copy->header().getFieldValue("h"), source->header().getFieldValue("h"));
    EXPECT_EQ(subMessagesOf(*copy), subMessagesOf(*source));
    EXPECT_EQ(copy->getSubMessage(0)->getRefCount(), 3);
    copy->removeAllSubMessages();
    copy->removeAllFields();
    copy->header().setRequestId("18");
    EXPECT_EQ(source->getSubMessageCount(), 2u);
    EXPECT_EQ(source->getFieldCount(), 1u);
    EXPECT_EQ(source->header().getRequestId(), "17");
}

TEST_F(MappedMessageTest, AFullCopyKeepsAnEmptyVector) {
    Message const source = messageWith({p_});
    source->removeAllSubMessages();
    Message const copy(new MappedMessage(*source));
    copy->removeSubMessages(0, 1);  // allowed, since the vector came along
    EXPECT_EQ(copy->getSubMessageCount(), 0u);
}

TEST_F(MappedMessageTest, DeliberateAConversionLeavesTheHeaderFresh) {
    Message const source = fullMessage();
    Message const second(source);
    auto * const object = new MappedMessage(static_cast<KestrinMessage const &>(*source));
    EXPECT_EQ(object->getRefCount(), 0);
    Message const copy(object);
    EXPECT_EQ(copy->getFieldValue("x"), source->getFieldValue("x"));
    expectFreshHeader(copy->header());
    EXPECT_EQ(subMessagesOf(*copy), subMessagesOf(*source));
}

TEST_F(MappedMessageTest, IsBuiltFromAnyMessage) {
    RefCountedPtr<test::MessageDouble> const source(new test::MessageDouble);
    source->fields = {{"y", nullptr}, {"x", new NumberData(1)}};
    source->ownHeader->requestId = "17";
    source->subMessages = {p_, AnyMessage(), q_};
    Message const copy(new MappedMessage(*source));
    EXPECT_EQ(copy->getFieldNames(), (std::vector<CString>{"x", "y"}));
    expectFreshHeader(copy->header());
    EXPECT_EQ(subMessagesOf(*copy), (Pointers{p_.get(), nullptr, q_.get()}));
    EXPECT_EQ(source->ownHeader->getRefCount(), 1);
}

TEST_F(MappedMessageTest, AssignmentReplacesBodyAndSubMessages) {
    Message const source = fullMessage();
    Message const second(source);
    Message const target = messageWith({p_, q_, r_});
    target->setFieldValue("x", "old");
    target->setFieldValue("y", "2");
    target->header().setRequestId("18");
    MappedMessage & result = *target = *source;
    EXPECT_EQ(&result, target.get());
    EXPECT_EQ(target->getRefCount(), 1);
    EXPECT_EQ(target->getFieldNames(), std::vector<CString>{"x"});
    EXPECT_EQ(target->getFieldValue("x"), source->getFieldValue("x"));
    EXPECT_EQ(subMessagesOf(*target), subMessagesOf(*source));
    EXPECT_EQ(p_->getRefCount(), 1);
    *target = *Message(new MappedMessage);
    EXPECT_EQ(target->getFieldCount(), 0u);
    EXPECT_EQ(target->getSubMessageCount(), 0u);
}

TEST_F(MappedMessageTest, DeliberateAssignmentKeepsTheHeader) {
    Message const source = fullMessage();
    for (bool const throughInterface : {false, true}) {
        Message const target(new MappedMessage);
        target->header().setRequestId("18");
        target->header().setMessageKind(MSGKIND_NOTICE);
        target->header().setFieldValue("own", "1");
        KestrinMessageHeader const * const header = &target->header();
        if (throughInterface) {
            *target = static_cast<KestrinMessage const &>(*source);
        } else {
            *target = *source;
        }
        EXPECT_EQ(&target->header(), header);
        EXPECT_EQ(header->getRequestId(), "18");
        EXPECT_EQ(header->getMessageTypeId(), "");
        EXPECT_EQ(header->getMessageKind(), MSGKIND_NOTICE);
        EXPECT_EQ(header->getFieldNames(), std::vector<CString>{"own"});
        EXPECT_EQ(header->getRefCount(), 1);
    }
}

TEST_F(MappedMessageTest, DeliberateTheHeaderTakesOverTheCountOfTheSourceHeader) {
    Message const source = fullMessage();
    std::function<Message()> const roads[] = {
        [&] { return Message(new MappedMessage(static_cast<KestrinMessage const &>(*source))); },
        [&] {
            Message const target(new MappedMessage);
            *target = *source;
            return target;
        },
        [&] {
            Message const target(new MappedMessage);
            *target = static_cast<KestrinMessage const &>(*source);
            return target;
        },
    };
    for (auto const & road : roads) {
        RefCountedPtr<KestrinMessageHeader> const held(&source->header());
        ASSERT_EQ(held->getRefCount(), 2);
        Message const made = road();
        EXPECT_EQ(made->header().getRefCount(), 2);
        made->header().removeRef();  // so that it ends with its message
    }
}

TEST_F(MappedMessageTest, DeliberateAssignmentThroughTheInterfaceAddsToTheBody) {
    Message const source = fullMessage();
    source->setFieldValue("z", "3");
    Message const second(source);
    Message const target = messageWith({p_});
    target->setFieldValue("x", "own");
    target->setFieldValue("y", "2");
    MappedMessage & result = *target = static_cast<KestrinMessage const &>(*source);
    EXPECT_EQ(&result, target.get());
    EXPECT_EQ(target->getRefCount(), 1);
    EXPECT_EQ(target->getFieldNames(), (std::vector<CString>{"x", "y", "z"}));
    EXPECT_EQ(target->getFieldValue("x")->asString(), "own");
    EXPECT_EQ(subMessagesOf(*target), subMessagesOf(*source));
    EXPECT_EQ(p_->getRefCount(), 1);
    *target = static_cast<KestrinMessage const &>(*q_);
    EXPECT_EQ(target->getFieldCount(), 3u);
    EXPECT_EQ(target->getSubMessageCount(), 0u);
}

TEST_F(MappedMessageTest, AssigningItselfChangesNothing) {
    Message const message = fullMessage();
    MappedMessage & alias = *message;
    *message = alias;
    *message = static_cast<KestrinMessage const &>(alias);
    EXPECT_EQ(message->getSubMessageCount(), 2u);
    EXPECT_EQ(message->getFieldCount(), 1u);
    EXPECT_EQ(message->header().getRequestId(), "17");
}

TEST_F(MappedMessageTest, TakesWhatItsOwnPartsHold) {
    for (bool const throughInterface : {false, true}) {
        for (bool const asField : {false, true}) {
            Message inner = fullMessage();
            MappedMessage const & source = *inner;
            Message const outer(new MappedMessage);
            if (asField) {
                outer->setFieldValue("inner", inner);
            } else {
                outer->addSubMessage(inner);
            }
            inner = nullptr;
            if (throughInterface) {
                *outer = static_cast<KestrinMessage const &>(source);
            } else {
                *outer = source;
            }
            EXPECT_EQ(outer->getSubMessageCount(), 2u);
            EXPECT_TRUE(outer->hasField("x"));
        }
    }
}

// ---- The limit -------------------------------------------------------------------------------

TEST_F(MappedMessageTest, RefusesMorePlacesThanTheLimit) {
    for (unsigned int const places : {0x40000000u, 0x40000001u, 0x80000000u, 0xffffffffu}) {
        SCOPED_TRACE(places);
        expectTooLong([&] { MappedMessage::createListMessage(places); });
        RefCountedPtr<test::MessageDouble> const huge(new test::MessageDouble);
        huge->extraSubMessages = places;
        expectTooLong([&] { Message(new MappedMessage(*huge)); });
        Message const target = messageWith({p_});
        expectTooLong([&] { *target = static_cast<KestrinMessage const &>(*huge); });
        EXPECT_EQ(subMessagesOf(*target), Pointers{p_.get()});
    }
}

// ---- The end ---------------------------------------------------------------------------------

TEST_F(MappedMessageTest, EndsItsSubMessagesThenItsHeaderThenItsBody) {
    Log log;
    {
        Message const message(new Recorded<MappedMessage>(&log, "message"));
        message->setFieldValue("body", Value(new Recorded<MappedRecordData>(&log, "body")));
        message->header().setFieldValue("header",
                                        Value(new Recorded<MappedRecordData>(&log, "header")));
        message->addSubMessage(AnyMessage(new Recorded<MappedMessage>(&log, "first")));
        message->addSubMessage(AnyMessage(new Recorded<MappedMessage>(&log, "second")));
    }
    EXPECT_EQ(log, (Log{"end message", "gone message", "end first", "gone first", "end second",
                        "gone second", "end header", "gone header", "end body", "gone body"}));
}

// ---- The order of the virtual operations -----------------------------------------------------

template <class Class>
void expectOrder() {
    test::expectVirtualOrder(
        24, {{"header", slotOf<KestrinMessageHeader &()>(&Class::header)},
             {"header const", slotOf<KestrinMessageHeader const &() const>(&Class::header)},
             {"getSubMessageCount", slotOf(&Class::getSubMessageCount)},
             {"getSubMessage", slotOf(&Class::getSubMessage)},
             {"addSubMessage", slotOf(&Class::addSubMessage)},
             {"insertSubMessageAt", slotOf(&Class::insertSubMessageAt)},
             {"removeSubMessage", slotOf(&Class::removeSubMessage)},
             {"removeSubmessageAt", slotOf(&Class::removeSubmessageAt)},
             {"removeSubMessages", slotOf(&Class::removeSubMessages)},
             {"removeAllSubMessages", slotOf(&Class::removeAllSubMessages)}});
}

TEST(KestrinMessageOrder, StandsBehindThatOfRecordData) {
    expectOrder<KestrinMessage>();
    expectOrder<MappedMessage>();
}

}  // namespace
}  // namespace tvk
