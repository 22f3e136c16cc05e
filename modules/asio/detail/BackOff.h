#pragma once

#include <algorithm>
#include <random>

namespace tvk::detail {

/// The waits between attempts at a connection: each longer than the one before by a factor, up to a
/// maximum, and shortened by a random part, so that clients which lost their server together do not come
/// back together. Milliseconds.
class BackOff {
public:
    /// `jitter`, 0 to 1, is the largest part that is taken off. One seed gives the same waits each time.
    BackOff(int first, int maximum, double factor, double jitter, unsigned int seed)
        : first_(first),
          maximum_(maximum),
          factor_(factor),
          jitter_(jitter),
          random_(seed),
          wait_(first) {}

    int next() {
        double const part = static_cast<double>(random_()) / static_cast<double>(random_.max());
        last_ = static_cast<int>(wait_ * (1.0 - jitter_ * part));
        wait_ = std::min(wait_ * factor_, static_cast<double>(maximum_));
        return last_;
    }
    int last() const { return last_; }  ///< 0 at first, and behind a reset
    void reset() {
        wait_ = first_;
        last_ = 0;
    }

private:
    int const first_;
    int const maximum_;
    double const factor_;
    double const jitter_;
    std::mt19937 random_;
    double wait_;
    int last_ = 0;
};

}  // namespace tvk::detail
