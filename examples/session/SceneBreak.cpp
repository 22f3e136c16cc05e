// A connection that breaks in the middle of a stream, with a request under way.

#include <string>

#include "examples/backend/Names.h"
#include "examples/session/Counting.h"
#include "examples/session/Outcome.h"
#include "examples/session/Stage.h"
#include "examples/session/Texts.h"
#include "examples/session/Watcher.h"
#include "examples/support/Messages.h"
#include "tvk/agent/AsyncRequestOperation.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/NumberData.h"

namespace session {

namespace {

constexpr int NOTICES = 5'000;
constexpr int BYTES_BEFORE_THE_CUT = 100'000;  // some of the notices, not all

}  // namespace

void breakConnection(Stage & stage) {
    stage.account.section("A connection that breaks");
    Counting counting;
    Watcher const watcher(stage.agent, "trade", tvk::KestrinConstants::WILDCARD,
                          [&](tvk::KestrinMessage const & trade) { counting.take(trade); });
    int const disconnected = stage.listener.disconnected;
    int const stops = stage.listener.realTimeStops;

    tvk::ErrorInfo error;
    stage.agent.request(fault("drop"), &error);
    Outcome underWay;
    stage.agent.asyncRequest(requestOfType(backend::request::ECHO), &underWay, nullptr);
    auto const cut = fault("disconnect");
    cut->setFieldValue(backend::field::AFTER_BYTES, new tvk::NumberData(BYTES_BEFORE_THE_CUT));
    stage.agent.asyncRequest(cut, nullptr, nullptr);
    askForBurst(stage, "trade", NOTICES);

    bool const broke = stage.until([&] { return stage.listener.disconnected > disconnected; });
    std::size_t const before = counting.count();
    bool const came = stage.until([&] { return counting.count() >= NOTICES; });
    stage.account.say("trades", std::to_string(before) + " before the break, " +
                                    std::to_string(counting.count() - before) + " behind it");
    stage.until([&] { return underWay.hasCome(); });
    stage.agent.cancelAsyncRequestsByHandler(&underWay);
    if (underWay.kind() == Outcome::Kind::FAILURE) {
        stage.alerts.report(underWay.error());
        stage.alerts.dismiss();
    }
    stage.account.expect(broke, "the connection breaks in the middle of a stream");
    stage.account.expect(came && counting.isInOrder() && before < NOTICES,
                         "the session is resumed, and no notice is lost or comes twice");
    stage.account.expect(stage.listener.realTimeStops == stops,
                         "so the real-time service never stopped");
    stage.account.expect(underWay.kind() == Outcome::Kind::FAILURE && underWay.count() == 1,
                         "the request that was under way fails and is not sent again");
}

}  // namespace session
