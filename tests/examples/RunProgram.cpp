#include "tests/examples/RunProgram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <thread>

namespace tvk::test {

namespace {

struct Channel {
    int reading = -1;
    int writing = -1;
};

Channel openPipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipe";
    }
    return {ends[0], ends[1]};
}

Channel openTerminal() {
    int const master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
        ADD_FAILURE() << "no terminal";
    }
    return {master, open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC)};
}

/// To the end; reading from a terminal that nobody holds any more is an error, and the end too.
void readAll(int from, std::string & text) {
    std::array<char, 4096> block{};
    for (ssize_t got = 0; (got = read(from, block.data(), block.size())) > 0;) {
        text.append(block.data(), static_cast<std::size_t>(got));
    }
    close(from);
}

void writeAll(int to, char const * bytes, std::size_t size) {
    while (size > 0) {
        ssize_t const done = write(to, bytes, size);
        if (done < 0) {
            return;  // the program has ended without reading everything, as it may
        }
        bytes += done;
        size -= static_cast<std::size_t>(done);
    }
}

void feed(int to, Input const & input) {
    std::size_t stall = input.text.size();
    if (input.secondsBeforeLastLine > 0 && !input.text.empty()) {
        stall = input.text.rfind('\n', input.text.size() - 2) + 1;
    }
    writeAll(to, input.text.data(), stall);
    std::this_thread::sleep_for(std::chrono::seconds(input.secondsBeforeLastLine));
    writeAll(to, input.text.data() + stall, input.text.size() - stall);
    close(to);
}

[[noreturn]] void become(std::vector<char *> const & words, int in, int out, int err) {
    constexpr rlim_t STACK_BYTES = 8U << 20U;
    rlimit const stack{STACK_BYTES, STACK_BYTES};
    if (setrlimit(RLIMIT_STACK, &stack) == 0 && dup2(in, STDIN_FILENO) >= 0 &&
        dup2(out, STDOUT_FILENO) >= 0 && dup2(err, STDERR_FILENO) >= 0) {
        execv(words[0], words.data());
    }
    _exit(126);
}

}  // namespace

Outcome runProgram(std::string const & program, std::vector<std::string> const & arguments,
                   Input const & input, ErrorsTo errorsTo) {
    std::signal(SIGPIPE, SIG_IGN);
    std::vector<char *> words{const_cast<char *>(program.c_str())};
    for (std::string const & argument : arguments) {
        words.push_back(const_cast<char *>(argument.c_str()));
    }
    words.push_back(nullptr);

    Channel const in = openPipe();
    Channel const out = openPipe();
    Channel const err = errorsTo == ErrorsTo::TERMINAL ? openTerminal() : openPipe();
    pid_t const child = fork();
    if (child == 0) {
        become(words, in.reading, out.writing, err.writing);
    }
    close(in.reading);
    close(out.writing);
    close(err.writing);

    Outcome outcome;
    std::thread feeder(feed, in.writing, std::cref(input));
    std::thread errors(readAll, err.reading, std::ref(outcome.err));
    readAll(out.reading, outcome.out);
    errors.join();
    feeder.join();
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status)) {
        outcome.exitStatus = WEXITSTATUS(status);
    }
    return outcome;
}

std::string contentOf(std::string const & name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tvk::test
