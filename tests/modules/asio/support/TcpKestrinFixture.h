#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "modules/asio/TcpKestrin.h"
#include "tests/modules/asio/Driven.h"
#include "tests/modules/asio/support/FrameServer.h"
#include "tvk/agent/AsyncReplyHandler.h"
#include "tvk/agent/AsyncRequestOperation.h"
#include "tvk/agent/KestrinListener.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/MappedMessage.h"

/// What the application heard, a line each: "connected", "onReply 7 x", ...
using Heard = std::vector<std::string>;

inline std::string codeText(tvk::ErrorInfo const * error) {
    return error == nullptr ? "null" : std::to_string(error->getErrorCode());
}

inline std::string valueIn(tvk::KestrinMessage const & message) {
    auto const value = message.getFieldValue("value");
    return value ? value->asString().GetString() : "";
}

/// Writes short lines; `during` runs in each callback, with its line, and may do anything.
class HearingListener : public tvk::KestrinListener {
public:
    explicit HearingListener(Heard & heard) : heard_(heard) {}

    std::function<void(std::string const &)> during;

    void onStartupCompleted(tvk::Kestrin *, tvk::RecordData const & data) override {
        auto const market = data.getFieldValue("market");
        hear("startup " + std::string(market ? market->asString().GetString() : "nothing"));
    }
    void onLoginReply(tvk::Kestrin *, tvk::RefCountedPtr<tvk::KestrinMessage> const & reply,
                      bool succeeded, CString const & code, CString const & text) override {
        lastText = text.GetString();
        hear(std::string("login ") + (succeeded ? "yes " : "no ") + code.GetString() +
             (reply.isNull() ? " null" : ""));
    }
    void onReloginRequired(tvk::Kestrin *, tvk::ErrorInfo const & reason) override {
        hear("relogin " + codeText(&reason));
    }
    void onKestrinError(tvk::Kestrin *, tvk::ErrorInfo const & error) override {
        lastText = error.getErrorMessage().GetString();
        hear("error " + codeText(&error));
    }
    void onConnected(tvk::Kestrin *) override { hear("connected"); }
    void onDisconnected(tvk::Kestrin *, tvk::ErrorInfo const * error) override {
        hear("disconnected " + codeText(error));
    }
    void onStopped(tvk::Kestrin *, tvk::ErrorInfo const * error) override {
        hear("stopped " + codeText(error));
    }
    void onRealTimeServiceStarted(tvk::Kestrin *, bool restarted) override {
        hear(restarted ? "real time again" : "real time");
    }
    void onRealTimeServiceStopped(tvk::Kestrin *, tvk::ErrorInfo const * error) override {
        hear("real time stopped " + codeText(error));
    }

    std::string lastText;

private:
    void hear(std::string const & line) {
        heard_.push_back(line);
        if (during) {
            during(line);
        }
    }

    Heard & heard_;
};

class HearingReplies : public tvk::AsyncReplyHandler {
public:
    using MessagePtr = tvk::RefCountedPtr<tvk::KestrinMessage>;

    explicit HearingReplies(Heard & heard) : heard_(heard) {}

    std::function<void(std::string const &)> during;
    tvk::ErrorInfo lastError;

    void onReply(MessagePtr const & request, MessagePtr const & reply, void *) override {
        hear("reply", *request, " " + valueIn(*reply));
    }
    void onTimeout(MessagePtr const & request, void *) override { hear("timeout", *request, ""); }
    void onCanceled(MessagePtr const & request, void *) override { hear("canceled", *request, ""); }
    void onError(MessagePtr const & request, tvk::ErrorInfo const & error, void *) override {
        lastError = error;
        hear("failed", *request, " " + codeText(&error));
    }

private:
    void hear(char const * what, tvk::KestrinMessage const & request, std::string const & more) {
        heard_.push_back(std::string(what) + " " + valueIn(request) + more);
        if (during) {
            during(heard_.back());
        }
    }

    Heard & heard_;
};

class HearingNotices : public tvk::KestrinNoticeMessageHandler {
public:
    HearingNotices(Heard & heard, std::string name) : heard_(heard), name_(std::move(name)) {}

    std::function<void(std::string const &)> during;

    void onNotice(tvk::Kestrin *, tvk::RefCountedPtr<tvk::KestrinMessage> const & notice) override {
        heard_.push_back(name_ + " " + valueIn(*notice));
        if (during) {
            during(heard_.back());
        }
    }

private:
    Heard & heard_;
    std::string name_;
};

inline tvk::RefCountedPtr<tvk::KestrinMessage> makeRequest(char const * type,
                                                           std::string const & value) {
    tvk::RefCountedPtr<tvk::KestrinMessage> message(new tvk::MappedMessage);
    message->header().setMessageKind(MSGKIND_REQUEST);
    message->header().setMessageTypeId(type);
    message->setFieldValue("value", value.c_str());
    return message;
}

/// An agent and its back end on one loop, driven by the test. Times are short, and waits before a new
/// attempt next to nothing.
class TcpKestrinTest : public testing::Test {
protected:
    using Code = tvk::KestrinConstants;

    TcpKestrinTest() {
        options.host = "127.0.0.1";
        options.port = server.port();
        options.plain = true;
        options.backOffFirstMilliSec = 1;
        options.backOffMaximumMilliSec = 4;
        options.jitterSeed = 1;
    }

    void make() {
        agent = new tvk::TcpKestrin(server.loop(), options);
        tvk::RefCountedPtr<tvk::KestrinConfig> const config(new tvk::KestrinConfig);
        config->setVersionNum("1.2");
        agent->initialize(config, nullptr);
        agent->addKestrinListener(&listener);
    }

    template <class Condition>
    bool until(Condition const & condition, std::size_t atOnce = 1000) {
        auto const end = std::chrono::steady_clock::now() + PATIENCE;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
            bool const moved = agent ? agent->poll(atOnce) > 0 : server.runContext() > 0;
            if (!moved) {
                std::this_thread::sleep_for(std::chrono::microseconds(50));
            }
        }
        return true;
    }
    bool untilHeard(std::string const & line) {
        return until([&] { return timesHeard(line) > 0; });
    }
    bool untilHeard(std::string const & line, long times) {
        return until([&] { return timesHeard(line) >= times; });
    }
    long timesHeard(std::string const & line) const {
        return static_cast<long>(std::count(heard.begin(), heard.end(), line));
    }
    /// What stands ready, and what the network brings within some milliseconds.
    void settle(int milliSec = 30) {
        auto const end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliSec);
        until([&] { return std::chrono::steady_clock::now() > end; });
    }

    void connect() {
        if (!agent) {
            make();
        }
        ASSERT_TRUE(agent->start(nullptr));
        ASSERT_TRUE(untilHeard("connected"));
    }
    void logIn() {
        connect();
        ASSERT_TRUE(agent->login("trader", "secret", nullptr));
        ASSERT_TRUE(untilHeard("startup open"));
        ASSERT_EQ(agent->getStatus(), KESTRINSTATUS_LOGGED_IN);
    }
    void startRealTime() {
        logIn();
        ASSERT_TRUE(agent->startRealTimeService(nullptr));
        ASSERT_TRUE(untilHeard("real time"));
        heard.clear();
    }
    tvk::RefCountedPtr<tvk::AsyncRequestOperation> ask(char const * type, std::string const & value,
                                                       int timeoutMilliSec = 10'000) {
        return agent->asyncRequest(makeRequest(type, value), timeoutMilliSec, &replies, nullptr);
    }
    static std::string noticeBody(unsigned long long value) {
        return "{\"value\":" + std::to_string(value) + "}";
    }

    FrameServer server;
    tvk::TcpOptions options;
    Heard heard;
    HearingListener listener{heard};
    HearingReplies replies{heard};
    HearingNotices notices{heard, "notice"};
    tvk::RefCountedPtr<tvk::TcpKestrin> agent;  // ends first
};
