#include "bench/Turns.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <vector>

namespace {

using tvk::bench::TurnTaker;

enum class Behaviour { GOOD, FAILS_TO_SET_UP, FAILS_IN_TURN_2, CRASHES_IN_TURN_2, HANGS, EXITS };

/// Writes a letter for what it is asked to do, and its name, into a pipe.
class Taker : public TurnTaker {
public:
    Taker(char name, Behaviour behaviour, int log, std::vector<std::string> & deaths)
        : name_(name), behaviour_(behaviour), log_(log), deaths_(deaths) {}

    bool setUp() override {
        tell('s');
        if (behaviour_ == Behaviour::EXITS) {
            _exit(3);
        }
        return behaviour_ != Behaviour::FAILS_TO_SET_UP;
    }
    bool takeTurn() override {
        tell('t');
        ++turns_;
        if (behaviour_ == Behaviour::CRASHES_IN_TURN_2 && turns_ == 2) {
            kill(getpid(), SIGKILL);
        }
        if (behaviour_ == Behaviour::HANGS) {
            pause();
        }
        return behaviour_ != Behaviour::FAILS_IN_TURN_2 || turns_ < 2;
    }
    void end() override { tell('e'); }
    void died(std::string const & reason) override { deaths_.push_back(name_ + (": " + reason)); }

private:
    void tell(char what) const {
        char const entry[] = {what, name_, ' '};
        EXPECT_EQ(write(log_, entry, sizeof entry), static_cast<ssize_t>(sizeof entry));
    }

    char name_;
    Behaviour behaviour_;
    int log_;
    std::vector<std::string> & deaths_;
    int turns_ = 0;
};

struct Outcome {
    std::string log;
    std::vector<std::string> deaths;
};

/// Takers A, B and so on.
Outcome outcomeOf(std::vector<Behaviour> const & behaviours, int rounds) {
    Outcome outcome;
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    std::vector<std::unique_ptr<TurnTaker>> takers;
    for (std::size_t i = 0; i < behaviours.size(); ++i) {
        takers.push_back(std::make_unique<Taker>(static_cast<char>('A' + i), behaviours[i], ends[1],
                                                 outcome.deaths));
    }
    takeTurns(takers, rounds, std::chrono::milliseconds(1000));
    close(ends[1]);
    char room[1000];
    ssize_t const length = read(ends[0], room, sizeof room);
    EXPECT_GE(length, 0);
    outcome.log.assign(room, static_cast<std::size_t>(length));
    close(ends[0]);
    return outcome;
}

TEST(TurnsTest, EachRoundStartsWithAnother) {
    Outcome const outcome = outcomeOf({Behaviour::GOOD, Behaviour::GOOD, Behaviour::GOOD}, 4);
    EXPECT_EQ(outcome.log, "sA sB sC tA tB tC tB tC tA tC tA tB tA tB tC eA eB eC ");
    EXPECT_TRUE(outcome.deaths.empty());
}

TEST(TurnsTest, NoRoundsAreJustSetUpAndEnd) {
    EXPECT_EQ(outcomeOf({Behaviour::GOOD}, 0).log, "sA eA ");
    EXPECT_EQ(outcomeOf({}, 3).log, "");
}

TEST(TurnsTest, WhatSaysNoTakesNoMoreTurnsAndTellsItself) {
    Outcome const outcome =
        outcomeOf({Behaviour::FAILS_TO_SET_UP, Behaviour::GOOD, Behaviour::FAILS_IN_TURN_2}, 3);
    EXPECT_EQ(outcome.log, "sA sB sC tB tC tC tB tB eB ");
    EXPECT_TRUE(outcome.deaths.empty());
}

TEST(TurnsTest, ACrashLosesOneAlone) {
    Outcome const outcome = outcomeOf({Behaviour::CRASHES_IN_TURN_2, Behaviour::GOOD}, 3);
    EXPECT_EQ(outcome.log, "sA sB tA tB tB tA tB eB ");
    EXPECT_EQ(outcome.deaths, std::vector<std::string>{"A: ends its process: Killed"});
}

TEST(TurnsTest, AnExitIsNoted) {
    Outcome const outcome = outcomeOf({Behaviour::EXITS, Behaviour::GOOD}, 1);
    EXPECT_EQ(outcome.log, "sA sB tB eB ");
    EXPECT_EQ(outcome.deaths, std::vector<std::string>{"A: exits with 3"});
}

TEST(TurnsTest, WhatTakesTooLongIsKilled) {
    Outcome const outcome = outcomeOf({Behaviour::GOOD, Behaviour::HANGS}, 2);
    EXPECT_EQ(outcome.log, "sA sB tA tB tA eA ");
    EXPECT_EQ(outcome.deaths, std::vector<std::string>{"B: takes too long"});
}

}  // namespace
