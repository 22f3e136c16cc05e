#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

#include "bench/Work.h"

/// Registration of the rows. A row's name is `work/corpus/peer`.
namespace tvk::bench {

void addJsonRows(Peers const & peers);
void addCacheRows(Peers const & peers);
void addCodePageRows(Peers const & peers);
void addUtf8Rows(Peers const & peers);
void addEncoderRows(Peers const & peers);
void addPercentRows(Peers const & peers);
void addDateRows(Peers const & peers);
void addSplitRows(Peers const & peers);
void addCipherRows(Peers const & peers);
void addAgentRows(Peers const & peers);
void addXmlRows(Peers const & peers);

/// What one pass over the documents of a row handles.
struct PassSize {
    std::size_t bytes;  ///< 0: no speed in bytes is given
    std::size_t documents;
};

/// Times `pass` over and over. It has run at least once before: that run counts the allocations.
void timePasses(benchmark::State & state, PassSize size, std::function<void()> const & pass);

/// Registers a row. `run` sets up, compares and calls timePasses; what it throws fails the row.
void addRow(std::string const & name, std::function<void(benchmark::State &)> run);

/// Thrown by a row whose result differs from tvk's.
struct Disagreement {};

inline void requireAgreement(bool agrees) {
    if (!agrees) {
        throw Disagreement();
    }
}

/// A value that is made when it is first asked for.
template <class Value>
class Lazy {
public:
    explicit Lazy(std::function<Value()> make) : make_(std::move(make)) {}

    Value const & get() {
        if (make_) {
            value_ = std::exchange(make_, nullptr)();
        }
        return value_;
    }

private:
    std::function<Value()> make_;
    Value value_{};
};

}  // namespace tvk::bench
