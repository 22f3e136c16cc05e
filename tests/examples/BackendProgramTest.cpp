#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

#include "tests/examples/BackendClient.h"
#include "tests/examples/RunProgram.h"

extern char ** environ;

namespace tvk::test {

namespace {

/// The program as it runs, with its standard output.
class Running {
public:
    Running() {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, ends[0]);
        std::string program = TVK_BACKEND;
        char * const words[] = {program.data(), nullptr};
        EXPECT_EQ(posix_spawn(&id_, program.c_str(), &actions, nullptr, words, environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        out_ = ends[0];
    }
    Running(Running const &) = delete;
    Running & operator=(Running const &) = delete;
    ~Running() {
        close(out_);
        if (id_ > 0) {
            end(SIGKILL);
        }
    }

    /// The next line, or what there is to the end.
    std::string line() const {
        std::string text;
        for (char byte = 0; read(out_, &byte, 1) == 1 && byte != '\n';) {
            text += byte;
        }
        return text;
    }

    /// The exit status; -1 where the signal was the end of it.
    int end(int signal) {
        int status = 0;
        kill(id_, signal);
        waitpid(id_, &status, 0);
        id_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t id_ = 0;
    int out_ = -1;
};

}  // namespace

TEST(BackendProgram, ServesUntilItIsTold) {
    for (int const signal : {SIGINT, SIGTERM}) {
        Running program;
        std::string const line = program.line();
        ASSERT_THAT(line, testing::MatchesRegex("listening on 127.0.0.1:[0-9]+ \\(plain\\)"));
        auto const port =
            static_cast<unsigned short>(std::atoi(line.c_str() + line.rfind(':') + 1));
        BackendClient client(port);
        EXPECT_TRUE(client.greet());
        EXPECT_EQ(program.end(signal), 0);
        EXPECT_EQ(program.line(), "ended");
        EXPECT_TRUE(client.ends());
    }
}

TEST(BackendProgram, PrintsItsOptions) {
    Outcome const outcome = runProgram(TVK_BACKEND, {"--help"});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_THAT(outcome.out, testing::StartsWith("Usage: backend [OPTION]..."));
    EXPECT_EQ(outcome.err, "");
}

TEST(BackendProgram, RefusesOthers) {
    Outcome const outcome = runProgram(TVK_BACKEND, {"--prot", "1"});
    EXPECT_EQ(outcome.exitStatus, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, testing::StartsWith("backend: unknown option --prot\nUsage: "));
}

TEST(BackendProgram, FailsWhereItCannotListen) {
    Outcome const outcome = runProgram(TVK_BACKEND, {"--address", "nowhere"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.err, testing::StartsWith("backend: "));
}

}  // namespace tvk::test
