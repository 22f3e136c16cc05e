// Start-up, login and the list of what is traded.

#include <cstdlib>
#include <string>

#include "examples/backend/Names.h"
#include "examples/session/Stage.h"
#include "examples/session/Texts.h"
#include "examples/support/Columns.h"
#include "examples/support/Messages.h"
#include "tvk/errors/ErrorInfo.h"

namespace session {

namespace {

namespace field = backend::field;

/// Whether the login was sent, and how it was answered.
bool logInWith(Stage & stage, CString const & password) {
    tvk::ErrorInfo error;
    int const before = stage.listener.logins;
    if (!stage.agent.login(ansi(stage.options.user), password, &error)) {
        stage.account.say("agent", "no login: " + shown(error));
        return false;
    }
    return stage.until([&] { return stage.listener.logins > before; }) &&
           stage.listener.lastLoginSucceeded;
}

}  // namespace

bool connect(Stage & stage) {
    stage.account.section("Start up");
    tvk::ErrorInfo error;
    bool const begins = stage.agent.start(&error);
    if (!begins) {
        stage.account.say("agent", "does not start: " + shown(error));
    }
    bool const stands = begins && stage.until([&] {
        return stage.listener.connected + stage.listener.stops > 0;
    }) && stage.agent.getStatus() == KESTRINSTATUS_CONNECTED;
    return stage.account.expect(stands, "the connection stands");
}

bool logIn(Stage & stage) {
    stage.account.section("Log in");
    bool const refused = !logInWith(stage, "not the password") && stage.listener.logins == 1;
    stage.account.expect(refused, "a wrong password is refused");
    bool const accepted = logInWith(stage, ansi(stage.options.password));
    if (!stage.account.expect(accepted, "the right one is accepted")) {
        return false;
    }
    bool const started = stage.until([&] { return stage.listener.startups == 1; });
    stage.account.expect(started, "the start-up completes once");

    tvk::ErrorInfo error;
    bool const asked = stage.agent.startRealTimeService(&error);
    bool const serves = asked && stage.until([&] { return stage.listener.realTimeStarts == 1; });
    return stage.account.expect(serves, "the real-time service starts");
}

bool listSymbols(Stage & stage) {
    stage.account.section("What is traded: a request that waits for its reply");
    tvk::ErrorInfo error;
    auto const reply = stage.agent.request(requestOfType(backend::request::SYMBOLS), &error);
    if (reply.isNull()) {
        stage.account.say("symbols", shown(error));
    }
    Columns table({"Code", "Name", "Tick", "Unit"});
    tvk::ListData const * const symbols = reply.isNull() ? nullptr : listIn(*reply, field::SYMBOLS);
    unsigned int const count = symbols == nullptr ? 0 : symbols->getCount();
    for (unsigned int i = 0; i < count; ++i) {
        auto const value = symbols->getElement(i);
        if (value.isNull() || value->getFieldType() != FLDTYPE_RECORD) {
            continue;
        }
        tvk::RecordData const & symbol = value->asRecord();
        table.add({shownField(symbol, field::CODE), shownField(symbol, field::NAME),
                   shownField(symbol, field::TICK), shownField(symbol, field::UNIT)});
        if (textIn(symbol, field::CODE) == stage.symbol) {
            stage.symbolName = textIn(symbol, field::NAME);
            stage.unit = static_cast<int>(numberIn(symbol, field::UNIT));
            stage.tick = doubleIn(symbol, field::TICK);
        }
    }
    if (count > 0) {
        stage.account.table(table.text());
    }
    bool const isKnown = !stage.symbolName.IsEmpty() && stage.unit > 0 && stage.tick > 0;
    return stage.account.expect(isKnown, shown(stage.symbol) + " is among them");
}

}  // namespace session
