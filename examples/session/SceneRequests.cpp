// The four outcomes of a request, and what becomes of an error.

#include <chrono>
#include <cstddef>
#include <deque>
#include <string>

#include "examples/backend/Names.h"
#include "examples/session/Outcome.h"
#include "examples/session/Stage.h"
#include "examples/session/Texts.h"
#include "examples/support/Messages.h"
#include "tvk/agent/AsyncRequestOperation.h"
#include "tvk/values/NumberData.h"

namespace session {

namespace {

namespace field = backend::field;

constexpr int AT_ONCE = 1'000;
constexpr int SHORT_MILLI_SEC = 150;
constexpr char GREETING[] = "こんにちは、世界";

tvk::RefCountedPtr<tvk::KestrinMessage> echoOf(int number) {
    auto const request = requestOfType(backend::request::ECHO);
    request->setFieldValue("number", new tvk::NumberData(number));
    request->setFieldValue("greeting", ansi(GREETING));
    return request;
}

bool isEchoOf(int number, Outcome const & outcome) {
    return outcome.kind() == Outcome::Kind::REPLY && outcome.count() == 1 &&
           numberIn(*outcome.reply(), "number") == number &&
           textIn(*outcome.reply(), "greeting") == ansi(GREETING);
}

void askMany(Stage & stage) {
    std::deque<Outcome> outcomes(AT_ONCE);
    std::size_t come = 0;
    for (int i = 0; i < AT_ONCE; ++i) {
        stage.agent.asyncRequest(echoOf(i), &outcomes[static_cast<std::size_t>(i)], nullptr);
    }
    stage.until([&] {
        while (come < outcomes.size() && outcomes[come].hasCome()) {
            ++come;
        }
        return come == outcomes.size();
    });
    // An outcome must not be told to what is gone.
    stage.agent.cancelAllAsyncRequests();
    int own = 0;
    for (int i = 0; i < AT_ONCE; ++i) {
        own += isEchoOf(i, outcomes[static_cast<std::size_t>(i)]) ? 1 : 0;
    }
    if (!outcomes.empty() && outcomes[0].reply()) {
        stage.account.say("echo", "number " + shownField(*outcomes[0].reply(), "number") + ", " +
                                      shownField(*outcomes[0].reply(), "greeting"));
    }
    stage.account.expect(own == AT_ONCE, "each of " + std::to_string(AT_ONCE) +
                                             " requests at once gets its own reply");
}

void askInVain(Stage & stage) {
    tvk::ErrorInfo error;
    stage.agent.request(fault("drop"), &error);
    Outcome outcome;
    stage.agent.asyncRequest(echoOf(1), SHORT_MILLI_SEC, &outcome, nullptr);
    stage.until([&] { return outcome.hasCome(); });
    stage.agent.cancelAsyncRequestsByHandler(&outcome);
    stage.account.expect(
        outcome.kind() == Outcome::Kind::TIMEOUT && outcome.count() == 1,
        "a request without a reply times out after " + std::to_string(SHORT_MILLI_SEC) + " ms");
}

void changeTheMind(Stage & stage) {
    auto const delay = fault("delay");
    delay->setFieldValue(field::MILLI_SEC, new tvk::NumberData(SHORT_MILLI_SEC));
    tvk::ErrorInfo error;
    stage.agent.request(delay, &error);
    Outcome outcome;
    auto const operation = stage.agent.asyncRequest(echoOf(2), &outcome, nullptr);
    operation->cancel();
    stage.until([&] { return outcome.hasCome(); });
    stage.work(std::chrono::milliseconds(2 * SHORT_MILLI_SEC));
    stage.agent.cancelAsyncRequestsByHandler(&outcome);
    stage.account.expect(outcome.kind() == Outcome::Kind::CANCELED && outcome.count() == 1,
                         "a request that is cancelled ends so, and its late reply is dropped");
}

}  // namespace

void askAndAnswer(Stage & stage) {
    stage.account.section("Requests: answered, timed out, cancelled");
    askMany(stage);
    askInVain(stage);
    changeTheMind(stage);
}

void showErrorOnce(Stage & stage) {
    stage.account.section("An error that is shown once");
    auto const order = requestOfType(backend::request::ORDER_NEW);
    order->setFieldValue(field::CODE, "0000");
    order->setFieldValue(field::SIDE, "buy");
    order->setFieldValue(field::QUANTITY, new tvk::NumberData(100));
    order->setFieldValue(field::PRICE, new tvk::NumberData(0));

    bool areRefusals = true;
    auto const fail = [&] {
        tvk::ErrorInfo error;
        auto const reply = stage.agent.request(order, &error);
        areRefusals =
            areRefusals && reply.isNull() && error.getErrorCode() == backend::REFUSED_SYMBOL;
        return stage.alerts.report(error);
    };
    bool const first = fail();
    bool const second = fail();
    stage.alerts.dismiss();
    bool const third = fail();
    stage.alerts.dismiss();
    stage.account.expect(areRefusals, "an order for an unknown code is refused with its reason");
    stage.account.expect(first && !second && third,
                         "it is shown, held back while it is shown, and shown anew");
}

tvk::RefCountedPtr<tvk::KestrinMessage> fault(char const * kind) {
    auto request = requestOfType(backend::request::FAULT);
    request->setFieldValue(field::KIND, kind);
    return request;
}

}  // namespace session
