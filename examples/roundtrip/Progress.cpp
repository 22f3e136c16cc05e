#include "examples/roundtrip/Progress.h"

#include <unistd.h>

#include <cstdio>

namespace {

constexpr std::chrono::milliseconds SILENT_AT_FIRST{500};
constexpr std::chrono::milliseconds BETWEEN_UPDATES{100};

}  // namespace

Progress::Progress()
    : onTerminal_(isatty(STDERR_FILENO) != 0),
      next_(std::chrono::steady_clock::now() + SILENT_AT_FIRST) {}

void Progress::show(unsigned long long lines, unsigned long long bytes) {
    if (!onTerminal_ || std::chrono::steady_clock::now() < next_) {
        return;
    }
    std::fprintf(stderr, "\r%llu lines, %llu MB", lines, bytes / 1'000'000);
    std::fflush(stderr);
    shown_ = true;
    next_ = std::chrono::steady_clock::now() + BETWEEN_UPDATES;
}

void Progress::clear() {
    if (shown_) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        shown_ = false;
    }
}
