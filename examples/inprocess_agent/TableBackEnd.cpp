#include "examples/inprocess_agent/TableBackEnd.h"

#include <utility>

#include "examples/support/Fields.h"
#include "tvk/values/MappedMessageHeader.h"

namespace inprocess {

using tvk::FieldValue;
using tvk::KestrinMessage;
using tvk::KestrinMessageHeader;
using tvk::MappedMessageHeader;
using tvk::RefCountedPtr;

namespace {

Answer const UNKNOWN{0, R"({"code":6,"text":"unknown message"})", Answer::FAILURE};

RefCountedPtr<MappedMessageHeader> newHeader(MessageKindEnum kind, CString const & type) {
    RefCountedPtr<MappedMessageHeader> header(new MappedMessageHeader);
    header->setMessageKind(kind);
    header->setMessageTypeId(type);
    return header;
}

}  // namespace

TableBackEnd::TableBackEnd(AnswerTable table, Timeline & timeline, Receiver receiver)
    : table_(std::move(table)), timeline_(timeline), receiver_(std::move(receiver)) {}

void TableBackEnd::take(std::string const & frame) {
    tvk::ErrorInfo error;
    RefCountedPtr<KestrinMessage> const message = codec_.read(frame, &error);
    if (message.isNull() || error.hasError()) {
        return;
    }
    CString const & type = message->header().getMessageTypeId();
    Topic const topic(textIn(*message, "type"), textIn(*message, "subject"));
    if (type == "login" || type == "logout") {
        subscriptions_.clear();
    } else if (type == "subscribe") {
        subscribe(topic);
    } else if (type == "unsubscribe") {
        subscriptions_.erase(topic);
    }
    if (!message->header().getRequestId().IsEmpty()) {
        answer(message->header());
    }
}

void TableBackEnd::answer(KestrinMessageHeader const & request) {
    auto const row = table_.answers.find(request.getMessageTypeId());
    Answer const & answer = row == table_.answers.end() ? UNKNOWN : row->second;
    if (answer.outcome == Answer::SILENCE) {
        return;
    }
    auto const header = newHeader(MSGKIND_REPLY, request.getMessageTypeId());
    header->setRequestId(request.getRequestId());
    if (answer.outcome == Answer::FAILURE) {
        header->setFieldValue("failed", FieldValue::TRUE_VALUE);
    }
    timeline_.after(answer.milliSeconds,
                    [this, frame = codec_.writeHead(*header) + answer.body] { receiver_(frame); });
}

void TableBackEnd::subscribe(Topic const & topic) {
    int const subscription = ++lastSubscription_;
    subscriptions_[topic] = subscription;
    for (Push const & push : table_.pushes) {
        if (topic == Topic(push.type, push.subject)) {
            plan(topic, subscription, push);
        }
    }
}

void TableBackEnd::plan(Topic const & topic, int subscription, Push const & push) {
    timeline_.after(push.milliSeconds, [this, topic, subscription, frame = noticeOf(push)] {
        auto const open = subscriptions_.find(topic);
        if (open != subscriptions_.end() && open->second == subscription) {
            receiver_(frame);
        }
    });
}

std::string TableBackEnd::noticeOf(Push const & push) {
    auto const header = newHeader(MSGKIND_NOTICE, push.type);
    header->setFieldValue("subject", push.subject);
    return codec_.writeHead(*header) + push.body;
}

}  // namespace inprocess
