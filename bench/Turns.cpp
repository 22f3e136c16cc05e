#include "bench/Turns.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace tvk::bench {

namespace {

constexpr char DONE = 'd';
constexpr char TURN = 't';

/// The two ends of a pipe, as the numbers that pipe() gives.
struct Pipe {
    int ends[2] = {-1, -1};

    Pipe() {
        if (pipe(ends) != 0) {
            throw std::runtime_error("there is no pipe to be had");
        }
    }
    int reading() const { return ends[0]; }
    int writing() const { return ends[1]; }
};

bool send(int writing, char what) { return write(writing, &what, 1) == 1; }

/// False at the end of the other process.
bool receive(int reading) {
    char what = 0;
    return read(reading, &what, 1) == 1;
}

/// What the process of a taker does: a call for each byte that comes, and a byte after each.
[[noreturn]] void live(TurnTaker & taker, int orders, int answers) {
    bool isFine = taker.setUp() && send(answers, DONE);
    while (isFine && receive(orders)) {
        isFine = taker.takeTurn() && send(answers, DONE);
    }
    if (isFine) {
        taker.end();
    }
    // Neither the destructors of the first process nor its buffers are this one's.
    _exit(0);
}

/// A taker's process, seen from the first one.
class Child {
public:
    /// `others` run already; their pipes are none of the new one's business.
    Child(TurnTaker & taker, std::vector<Child> const & others) : taker_(&taker) {
        Pipe const orders;
        Pipe const answers;
        std::fflush(nullptr);
        process_ = fork();
        if (process_ < 0) {
            throw std::runtime_error("there is no process to be had");
        }
        if (process_ == 0) {
            for (Child const & other : others) {
                other.closePipes();
            }
            close(orders.writing());
            close(answers.reading());
            live(taker, orders.reading(), answers.writing());
        }
        close(orders.reading());
        close(answers.writing());
        orders_ = orders.writing();
        answers_ = answers.reading();
    }

    bool isAlive() const { return isAlive_; }

    void takeTurn(std::chrono::milliseconds patience) {
        send(orders_, TURN);
        awaitAnswer(patience);
    }

    /// To the last order, or to its making. Without an answer the process has ended.
    void awaitAnswer(std::chrono::milliseconds patience) {
        pollfd answer = {answers_, POLLIN, 0};
        if (poll(&answer, 1, static_cast<int>(patience.count())) == 0) {
            kill(process_, SIGKILL);
            bury("takes too long");
        } else if (!receive(answers_)) {
            bury({});
        }
    }

    /// Lets it tell what it has to tell.
    void finish() { bury({}); }

private:
    void closePipes() const {
        close(orders_);
        close(answers_);
    }

    /// Waits for its end, which the closed pipe tells it to come to.
    void bury(std::string reason) {
        isAlive_ = false;
        closePipes();
        int status = 0;
        waitpid(process_, &status, 0);
        if (reason.empty() && WIFSIGNALED(status)) {
            reason = std::string("ends its process: ") + strsignal(WTERMSIG(status));
        } else if (reason.empty() && WEXITSTATUS(status) != 0) {
            reason = "exits with " + std::to_string(WEXITSTATUS(status));
        }
        if (!reason.empty()) {
            taker_->died(reason);
        }
    }

    TurnTaker * taker_;
    pid_t process_ = -1;
    int orders_ = -1;
    int answers_ = -1;
    bool isAlive_ = true;
};

}  // namespace

void takeTurns(std::vector<std::unique_ptr<TurnTaker>> const & takers, int rounds,
               std::chrono::milliseconds patience) {
    std::signal(SIGPIPE, SIG_IGN);  // an order to a process that has ended
    std::vector<Child> children;
    for (std::unique_ptr<TurnTaker> const & taker : takers) {
        Child child(*taker, children);
        child.awaitAnswer(patience);
        if (child.isAlive()) {
            children.push_back(child);
        }
    }
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t turn = 0; turn < children.size(); ++turn) {
            children[(turn + static_cast<std::size_t>(round)) % children.size()].takeTurn(patience);
        }
        std::erase_if(children, [](Child const & child) { return !child.isAlive(); });
    }
    for (Child & child : children) {
        child.finish();
    }
}

}  // namespace tvk::bench
