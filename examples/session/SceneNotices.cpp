// Quotes under a wildcard and under their own name, and a long stream of notices.

#include <chrono>
#include <cstddef>
#include <map>
#include <string>

#include "examples/backend/Names.h"
#include "examples/session/Counting.h"
#include "examples/session/Outcome.h"
#include "examples/session/Stage.h"
#include "examples/session/Texts.h"
#include "examples/session/Watcher.h"
#include "examples/support/Columns.h"
#include "tvk/agent/AsyncRequestOperation.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/NumberData.h"

namespace session {

namespace {

namespace field = backend::field;
using tvk::KestrinConstants;
using tvk::KestrinMessage;

constexpr int STREAM_NOTICES = 20'000;

struct Seen {
    std::size_t count = 0;
    std::string last;
    std::string change;
    std::string time;
};

std::string tableOf(std::map<std::string, Seen> const & board) {
    Columns table({"Code", "Last", "Change", "Time", "Quotes"});
    for (auto const & [code, seen] : board) {
        table.add({code, seen.last, seen.change, seen.time, std::to_string(seen.count)});
    }
    return table.text();
}

}  // namespace

void watchQuotes(Stage & stage) {
    stage.account.section("Quotes: all of them for a board, those of " + shown(stage.symbol) +
                          " for a screen as well");
    std::map<std::string, Seen> board;
    KestrinMessage const * lastOnBoard = nullptr;
    std::size_t onScreen = 0;
    bool boardCameFirst = true;
    bool onlyOwn = true;

    Watcher const screen(stage.agent, backend::notice::QUOTE, stage.symbol,
                         [&](KestrinMessage const & quote) {
                             ++onScreen;
                             boardCameFirst = boardCameFirst && lastOnBoard == &quote;
                             onlyOwn = onlyOwn && textIn(quote, field::CODE) == stage.symbol;
                         });
    Watcher const all(stage.agent, backend::notice::QUOTE, KestrinConstants::WILDCARD,
                      [&](KestrinMessage const & quote) {
                          Seen & seen = board[shownField(quote, field::CODE)];
                          ++seen.count;
                          seen.last = shownField(quote, field::LAST);
                          seen.change = shownField(quote, field::CHANGE);
                          seen.time = shownField(quote, field::TIME);
                          lastOnBoard = &quote;
                      });
    int const open = stage.agent.subscribe(backend::notice::QUOTE, stage.symbol);
    stage.account.expect(open == 2, "a second subscription is counted, not sent");
    stage.agent.unsubscribe(backend::notice::QUOTE, stage.symbol);

    stage.work(milliSec(stage.options.seconds));
    bool const came = stage.until([&] { return onScreen > 0 && board.size() > 1; });
    stage.account.table(tableOf(board));
    stage.account.expect(came, "quotes of several symbols come");
    stage.account.expect(onlyOwn, "the screen gets those of its symbol alone");
    stage.account.expect(onScreen == board[shown(stage.symbol)].count && boardCameFirst,
                         "each of them reaches both, the board before the screen");
}

void takeStream(Stage & stage) {
    stage.account.section("A stream of notices");
    Counting counting;
    Watcher const watcher(stage.agent, "tick", KestrinConstants::WILDCARD,
                          [&](KestrinMessage const & tick) { counting.take(tick); });
    auto const begin = std::chrono::steady_clock::now();
    askForBurst(stage, "tick", STREAM_NOTICES);
    bool const came = stage.until([&] { return counting.count() >= STREAM_NOTICES; });
    auto const took = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - begin);
    stage.account.say("ticks", std::to_string(counting.count()) + " notices in " +
                                   std::to_string(took.count()) + " ms");
    stage.account.expect(came && counting.isInOrder(),
                         std::to_string(STREAM_NOTICES) + " notices come, each once and in order");
}

void askForBurst(Stage & stage, char const * type, int count) {
    auto const request = fault("burst");
    request->setFieldValue(field::TYPE, type);
    request->setFieldValue(field::SUBJECT, "stream");
    request->setFieldValue(field::COUNT, new tvk::NumberData(count));
    stage.agent.asyncRequest(request, nullptr, nullptr);
}

}  // namespace session
