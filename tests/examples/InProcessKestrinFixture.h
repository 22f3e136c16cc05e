#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "examples/inprocess_agent/Account.h"
#include "examples/inprocess_agent/InProcessKestrin.h"
#include "examples/support/Messages.h"
#include "tests/support/Recorded.h"
#include "tvk/agent/AsyncRequestOperation.h"
#include "tvk/agent/KestrinListener.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"

namespace tvk::test {

using inprocess::Answer;
using inprocess::AnswerTable;
using inprocess::InProcessKestrin;
using testing::ElementsAre;
using testing::IsEmpty;

inline std::string textOf(CString const & text) { return text.GetString(); }

inline AnswerTable answersForTests() {
    AnswerTable table;
    table.answers = {
        {"login", {1, R"({"code":"0","text":"hello","time":1000000,"startup":{"a":1}})"}},
        {"heartbeat", {1, "{}"}},
        {"quick", {5, R"({"n":1})"}},
        {"slow", {50, R"({"n":2})"}},
        {"never", {0, "", Answer::SILENCE}},
        {"bad", {5, "no JSON"}},
        {"fails", {5, R"({"code":16,"text":"no"})", Answer::FAILURE}},
        {"down", {5, R"({"code":1000,"text":"line","network":true})", Answer::FAILURE}},
        {"mute", {5, "{}", Answer::FAILURE}},
        {"expired", {5, R"({"code":20,"text":"too long"})", Answer::FAILURE}},
    };
    table.pushes = {
        {"quote", "A", 10, R"({"n":1})"},
        {"quote", "A", 20, R"({"n":2})"},
        {"quote", "B", 10, R"({"n":3})"},
        {"quote", "broken", 10, "no JSON"},
    };
    return table;
}

/// Hears all that an agent tells, and writes it into one log. What a test wants to happen inside a
/// callback it puts into `during`.
class Ear : public KestrinListener, public AsyncReplyHandler, public KestrinNoticeMessageHandler {
public:
    explicit Ear(Log & log, std::string name = "") : log_(log), name_(std::move(name)) {}

    std::function<void()> during;
    ErrorInfo lastError;
    RefCountedPtr<KestrinMessage> lastRequest;
    void * lastUserObject = nullptr;

    void onConnected(Kestrin * /*agent*/) override { hear("connected"); }
    void onDisconnected(Kestrin * /*agent*/, ErrorInfo const * error) override {
        hear("disconnected" + codeOf(error));
    }
    void onLoginReply(Kestrin * /*agent*/, RefCountedPtr<KestrinMessage> const & reply,
                      bool succeeded, CString const & code, CString const & text) override {
        hear(std::string(succeeded ? "login " : "no login ") + textOf(code) + " " + textOf(text) +
             (reply ? "" : " without reply"));
    }
    void onStartupCompleted(Kestrin * /*agent*/, RecordData const & startupData) override {
        hear("startup " + inprocess::fieldsOf(startupData));
    }
    void onReloginRequired(Kestrin * /*agent*/, ErrorInfo const & reason) override {
        hear("relogin" + codeOf(&reason));
    }
    void onKestrinError(Kestrin * /*agent*/, ErrorInfo const & error) override {
        lastError = error;
        hear("error" + codeOf(&error));
    }
    void onStopped(Kestrin * /*agent*/, ErrorInfo const * error) override {
        hear("stopped" + codeOf(error));
    }
    void onRealTimeServiceStarted(Kestrin * /*agent*/, bool restarted) override {
        hear(restarted ? "real time again" : "real time");
    }
    void onRealTimeServiceStopped(Kestrin * /*agent*/, ErrorInfo const * error) override {
        hear("no real time" + codeOf(error));
    }

    void onReply(RefCountedPtr<KestrinMessage> const & request,
                 RefCountedPtr<KestrinMessage> const & reply, void * userObject) override {
        hearOutcome("replied " + inprocess::fieldsOf(*reply), request, userObject);
    }
    void onTimeout(RefCountedPtr<KestrinMessage> const & request, void * userObject) override {
        hearOutcome("timed out", request, userObject);
    }
    void onCanceled(RefCountedPtr<KestrinMessage> const & request, void * userObject) override {
        hearOutcome("cancelled", request, userObject);
    }
    void onError(RefCountedPtr<KestrinMessage> const & request, ErrorInfo const & error,
                 void * userObject) override {
        lastError = error;
        hearOutcome("failed" + codeOf(&error), request, userObject);
    }

    void onNotice(Kestrin * /*agent*/, RefCountedPtr<KestrinMessage> const & notice) override {
        hear(textOf(notice->header().getMessageTypeId()) + " " + inprocess::fieldsOf(*notice));
    }

private:
    static std::string codeOf(ErrorInfo const * error) {
        return error == nullptr ? "" : ' ' + std::to_string(error->getErrorCode());
    }
    void hear(std::string const & what) {
        log_.push_back(name_ + what);
        if (during) {
            during();
        }
    }
    void hearOutcome(std::string const & what, RefCountedPtr<KestrinMessage> const & request,
                     void * userObject) {
        lastRequest = request;
        lastUserObject = userObject;
        hear(textOf(request->header().getMessageTypeId()) + " " + what);
    }

    Log & log_;
    std::string const name_;
};

/// An agent that a listener hears. The log of ends tells when it is gone.
class InProcessKestrinTest : public testing::Test {
protected:
    using Agent = RefCountedPtr<InProcessKestrin>;

    void SetUp() override {
        agent_ = new Recorded<InProcessKestrin>(&ends_, "agent", answersForTests());
        agent_->addKestrinListener(&listener_);
    }

    static RefCountedPtr<KestrinConfig> configuration(char const * timeoutMilliSec = "100") {
        RefCountedPtr<KestrinConfig> config(new KestrinConfig);
        config->setProperty("timeoutMilliSec", timeoutMilliSec);
        return config;
    }

    void connect() {
        agent_->initialize(configuration(), nullptr);
        EXPECT_TRUE(agent_->start(nullptr));
        agent_->advance(10);
    }
    void logIn() {
        connect();
        logInOnly();
    }
    void logInOnly() {
        EXPECT_TRUE(agent_->login("me", "secret", nullptr));
        agent_->advance(1);
        EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_LOGGED_IN);
        heard_.clear();
    }
    void logInWithRealTime() {
        logIn();
        EXPECT_TRUE(agent_->startRealTimeService(nullptr));
        heard_.clear();
    }

    RefCountedPtr<AsyncRequestOperation> ask(char const * type, AsyncReplyHandler & handler) {
        return agent_->asyncRequest(requestOfType(type), &handler, nullptr);
    }
    RefCountedPtr<AsyncRequestOperation> ask(char const * type) { return ask(type, handler_); }

    /// What was heard since the last call, or since the login.
    Log heard() { return std::exchange(heard_, Log()); }
    Log heardAfter(int milliSeconds) {
        agent_->advance(milliSeconds);
        return heard();
    }

    /// The heads of what is sent from here on.
    void recordFrames() {
        agent_->setTap([this](InProcessKestrin::Direction direction, std::string const & frame) {
            if (direction == InProcessKestrin::Direction::OUT) {
                sent_.push_back(frame);
            }
        });
    }
    static std::string topic(char const * messageTypeId, char const * subject) {
        return std::string("{\"kind\":1,\"type\":\"") + messageTypeId + "\"}\n{\"subject\":\"" +
               subject + "\",\"type\":\"quote\"}";
    }

    Log heard_;
    Log ends_;
    Log sent_;
    Ear listener_{heard_};
    Ear handler_{heard_};
    Ear other_{heard_, "other: "};
    Agent agent_;
};

}  // namespace tvk::test
