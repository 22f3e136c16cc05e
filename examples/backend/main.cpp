// A small back end as a program of its own: prints where it listens, and serves until it is told to end.

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <csignal>
#include <iostream>
#include <string>

#include "examples/backend/Arguments.h"
#include "examples/backend/Backend.h"

namespace {

enum ExitStatus { ALL_WELL = 0, FAILED = 1, NOT_RUN = 2 };

/// Catches the signals from its beginning on, so that none is lost before somebody waits.
class EndSignal {
public:
    EndSignal() {
        signals_.async_wait([](std::error_code const & /*error*/, int /*signal*/) {});
    }
    void wait() { loop_.run(); }

private:
    asio::io_context loop_;
    asio::signal_set signals_{loop_, SIGINT, SIGTERM};
};

}  // namespace

int main(int count, char ** values) {
    backend::Arguments arguments;
    std::string problem;
    if (!backend::readArguments({values + 1, values + count}, &arguments, &problem)) {
        std::cerr << "backend: " << problem << "\n" << backend::USAGE;
        return NOT_RUN;
    }
    if (arguments.wantsHelp) {
        std::cout << backend::USAGE;
        return ALL_WELL;
    }
    if (arguments.isVerbose) {
        arguments.options.log = [](std::string const & line) { std::cerr << line << std::endl; };
    }
    EndSignal endSignal;
    backend::Backend backEnd(arguments.options);
    if (!backEnd.start(&problem)) {
        std::cerr << "backend: " << problem << "\n";
        return FAILED;
    }
    std::cout << "listening on " << arguments.options.address << ":" << backEnd.port()
              << (arguments.options.certFile.empty() ? " (plain)" : " (TLS)") << std::endl;
    endSignal.wait();
    backEnd.stop();
    std::cout << "ended" << std::endl;
    return ALL_WELL;
}
