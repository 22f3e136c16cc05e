// Logout with a request under way, and the end.

#include "examples/backend/Names.h"
#include "examples/session/Outcome.h"
#include "examples/session/Stage.h"
#include "examples/support/Messages.h"
#include "tvk/agent/AsyncRequestOperation.h"

namespace session {

void leave(Stage & stage) {
    stage.account.section("Log out with a request under way, and stop");
    Outcome outcome;
    stage.agent.asyncRequest(requestOfType(backend::request::ECHO), &outcome, nullptr);
    stage.agent.logout();
    bool const ended = stage.until(
        [&] { return outcome.hasCome() && stage.agent.getStatus() != KESTRINSTATUS_LOGGED_IN; });
    stage.account.expect(ended && outcome.count() == 1, "the request ends, once, with the session");
    stage.agent.stop();
    bool const stopped = stage.until([&] { return stage.listener.stops == 1; });
    stage.agent.cancelAllAsyncRequests();
    stage.account.expect(stopped && stage.agent.getStatus() == KESTRINSTATUS_STOPPED,
                         "the agent stops, once");
}

}  // namespace session
