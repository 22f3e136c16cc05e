// Subscriptions, and the notices that they bring.

#include <algorithm>

#include "examples/inprocess_agent/Errors.h"
#include "examples/inprocess_agent/InProcessKestrin.h"
#include "examples/inprocess_agent/Operation.h"
#include "examples/support/Fields.h"
#include "examples/support/Messages.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"
#include "tvk/errors/KestrinConstants.h"

namespace inprocess {

using tvk::ErrorInfo;
using tvk::Kestrin;
using tvk::KestrinConstants;
using tvk::KestrinNoticeMessageHandler;
using tvk::RefCountedPtr;

bool InProcessKestrin::startRealTimeService(ErrorInfo * error) {
    if (!isLoggedIn()) {
        return refuse(error, KestrinConstants::ERR_SessionError, "not logged in");
    }
    if (realTimeIsOn_) {
        return true;
    }
    RefCountedPtr<Kestrin> const alive(this);
    bool const restarted = realTimeWasOn_;
    realTimeIsOn_ = true;
    realTimeWasOn_ = true;
    for (auto const & [type, subject] : subscribed_) {
        transmitTopic("subscribe", type, subject);
    }
    fireOnRealTimeServiceStarted(restarted);
    return true;
}

void InProcessKestrin::stopRealTimeService() {
    if (!realTimeIsOn_) {
        return;
    }
    RefCountedPtr<Kestrin> const alive(this);
    for (auto const & [type, subject] : subscribed_) {
        transmitTopic("unsubscribe", type, subject);
    }
    endRealTimeService(nullptr);
}

void InProcessKestrin::endRealTimeService(ErrorInfo const * error) {
    if (realTimeIsOn_) {
        realTimeIsOn_ = false;
        fireOnRealTimeServiceStopped(error);
    }
}

void InProcessKestrin::doSubscribe(CString const & type, CString const & subject) {
    subscribed_.emplace(type, subject);
    if (realTimeIsOn_) {
        transmitTopic("subscribe", type, subject);
    }
}

void InProcessKestrin::doUnsubscribe(CString const & type, CString const & subject) {
    subscribed_.erase({type, subject});
    if (realTimeIsOn_) {
        transmitTopic("unsubscribe", type, subject);
    }
}

void InProcessKestrin::transmitTopic(char const * messageTypeId, CString const & type,
                                     CString const & subject) {
    MessagePtr const message = requestOfType(messageTypeId);
    message->setFieldValue("type", type);
    message->setFieldValue("subject", subject);
    send(message, nullptr);
}

void InProcessKestrin::takeNotice(MessagePtr const & notice, ErrorInfo const & error) {
    if (error.hasError()) {
        fireKestrinError(error);
        return;
    }
    if (!realTimeIsOn_) {
        return;
    }
    CString const type = notice->header().getMessageTypeId();
    CString const subject = textIn(notice->header(), "subject");
    auto const handlers = getAllPossibleMessageHandlers(type, subject);
    for (KestrinNoticeMessageHandler * const handler : handlers) {
        // Asked again each time: a handler before this one may have removed it, and its owner then
        // may have destroyed it.
        auto const still = getAllPossibleMessageHandlers(type, subject);
        if (std::find(still.begin(), still.end(), handler) != still.end()) {
            handler->onNotice(this, notice);
        }
    }
}

}  // namespace inprocess
