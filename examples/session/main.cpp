// A trading session over a TCP connection: with a back end of the program's own, or with one that was
// started elsewhere.

#include <cstdio>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "examples/backend/Backend.h"
#include "examples/session/Account.h"
#include "examples/session/Options.h"
#include "examples/session/OwnCertificate.h"
#include "examples/session/Texts.h"
#include "examples/session/Walk.h"
#include "modules/asio/TcpOptions.h"

namespace {

using session::Account;
using session::Options;

enum ExitStatus { ALL_HELD = 0, FAILED = 1, NOT_RUN = 2 };

constexpr int QUICK_MARKET_MILLI_SEC = 50;  // so that a short session sees something

tvk::TcpOptions tcpOptions(Options const & options) {
    tvk::TcpOptions tcp;
    tcp.host = session::ansi(options.host);
    tcp.port = options.port;
    tcp.plain = options.plain;
    tcp.inet.setCertFile(session::ansi(options.authorities));
    tcp.inet.setUserAgent("tvk session");
    tcp.requestMilliSec = static_cast<int>(options.patience * 1000);
    tcp.connectMilliSec = tcp.requestMilliSec;
    return tcp;
}

void walkElsewhere(Options const & options, Account & account) {
    account.say("A session with " + options.host + " port " + std::to_string(options.port));
    session::walk(options, tcpOptions(options), account);
}

void walkAlone(Options options, Account & account) {
    std::optional<session::OwnCertificate> certificate;
    backend::Backend::Options mine;
    mine.quoteMilliSec = QUICK_MARKET_MILLI_SEC;
    if (!options.plain) {
        certificate.emplace();
        mine.certFile = certificate->certificateFile();
        mine.keyFile = certificate->keyFile();
        options.authorities = certificate->certificateFile();
    }
    backend::Backend backEnd(mine);
    std::string problem;
    if (!backEnd.start(&problem)) {
        throw std::runtime_error("the back end does not start: " + problem);
    }
    options.host = "127.0.0.1";
    options.port = backEnd.port();
    account.say("A session with a back end on port " + std::to_string(options.port) +
                (options.plain ? ", without TLS" : ", with TLS"));
    session::walk(options, tcpOptions(options), account);
    backEnd.stop();
}

ExitStatus run(Options const & options) {
    Account account(std::cout, options.quiet);
    if (options.host.empty()) {
        walkAlone(options, account);
    } else {
        walkElsewhere(options, account);
    }
    account.close();
    return account.allHeld() && std::cout ? ALL_HELD : FAILED;
}

}  // namespace

int main(int argc, char ** argv) {
    std::string complaint;
    auto const options = session::parseOptions({argv + 1, argv + argc}, &complaint);
    if (!options) {
        std::fprintf(stderr, "session: %s\nsession --help says more\n", complaint.c_str());
        return NOT_RUN;
    }
    if (options->help) {
        std::fputs(session::USAGE, stdout);
        return ALL_HELD;
    }
    try {
        return run(*options);
    } catch (std::exception const & problem) {
        std::fprintf(stderr, "session: %s\n", problem.what());
        return FAILED;
    }
}
