#pragma once

#include <functional>
#include <map>
#include <string>

#include "examples/inprocess_agent/AnswerTable.h"
#include "examples/inprocess_agent/FrameCodec.h"
#include "examples/inprocess_agent/Timeline.h"

namespace inprocess {

/// The far end of the connection, which in another agent is a socket: takes frames, and gives frames
/// back when their time has come, as its table says.
///
/// A request with an identifier is answered, one of an unknown type with a failure. "subscribe" and
/// "unsubscribe" open and close what their fields "type" and "subject" name; "login" and "logout"
/// close all of it. What cannot be read is dropped.
class TableBackEnd {
public:
    using Receiver = std::function<void(std::string const & frame)>;

    /// `timeline` is borrowed and must not run what was planned here after this object's end.
    TableBackEnd(AnswerTable table, Timeline & timeline, Receiver receiver);
    TableBackEnd(TableBackEnd const &) = delete;
    TableBackEnd & operator=(TableBackEnd const &) = delete;

    /// Never calls the receiver by itself; that is for the timeline.
    void take(std::string const & frame);

private:
    /// Type and subject.
    using Topic = std::pair<CString, CString>;

    void answer(tvk::KestrinMessageHeader const & request);
    void subscribe(Topic const & topic);
    void plan(Topic const & topic, int subscription, Push const & push);
    std::string noticeOf(Push const & push);

    AnswerTable const table_;
    Timeline & timeline_;
    Receiver const receiver_;
    FrameCodec codec_;
    std::map<Topic, int> subscriptions_;  // the number of each tells a later one from it
    int lastSubscription_ = 0;
};

}  // namespace inprocess
