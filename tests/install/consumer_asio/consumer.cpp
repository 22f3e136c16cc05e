// A program of somebody else that checks its options, and knows nothing of Asio.

#include <modules/asio/TcpOptions.h>
#include <tvk/tvk.h>

#include <cstdio>

int main() {
    tvk::TcpOptions options;
    options.host = "localhost";
    options.port = 4711;
    tvk::ErrorInfo error;
    if (!options.check(&error)) {
        std::puts(error.getErrorMessage());
        return 1;
    }
    return 0;
}
