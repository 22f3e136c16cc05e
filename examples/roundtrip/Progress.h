#pragma once

#include <chrono>

/// One line on standard error that says how far a long run is. Silent unless that is a terminal,
/// and for the first half second.
class Progress {
public:
    Progress();

    void show(unsigned long long lines, unsigned long long bytes);
    /// Takes the line away, so that others can write. To be called before anything is printed.
    void clear();

private:
    bool const onTerminal_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point next_;
};
