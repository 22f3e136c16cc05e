// A program of somebody else that makes an agent, and knows nothing of Asio.

#include <modules/asio/DesktopLoop.h>
#include <modules/asio/TcpKestrin.h>
#include <tvk/tvk.h>

#include <cstdio>
#include <memory>

int main() {
    tvk::TcpOptions options;
    options.host = "localhost";
    options.port = 4711;
    tvk::ErrorInfo error;
    if (!options.check(&error)) {
        std::puts(error.getErrorMessage());
        return 1;
    }
    tvk::RefCountedPtr<tvk::TcpKestrin> const agent(
        new tvk::TcpKestrin(std::make_shared<tvk::DesktopLoop>([] {}), options));
    agent->stop();
    return agent->getStatus() == KESTRINSTATUS_STOPPED && agent->poll(1) == 0 ? 0 : 1;
}
