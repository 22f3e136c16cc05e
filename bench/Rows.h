#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/Work.h"

/// Registration of the rows. A group is one work on one corpus, `work/corpus`; a row is what one peer
/// makes of it, `work/corpus/peer`.
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
void addRoadRows(Peers const & peers);
void addMemoryRows(Peers const & peers);

/// What one pass over the documents of a row handles.
struct PassSize {
    std::size_t bytes;  ///< 0: no speed in bytes is given
    std::size_t documents;
};

/// A work that agrees with tvk, ready to be timed.
struct TimedWork {
    PassSize size;
    std::function<void()> pass;
    /// Sets right what the rows that it takes turns with may have changed.
    std::function<void()> begin = [] {};
};

/// What a row that is not timed measures, by name.
using Figures = std::vector<std::pair<char const *, double>>;

struct Row {
    std::string group;
    std::string peer;
    std::function<TimedWork()> make;
    std::function<Figures()> measure;  ///< instead of `make`

    std::string name() const { return group + '/' + peer; }
};

/// In the order of their addition, those of a group together.
std::vector<Row> const & allRows();

/// Registers a row. `make` sets up and compares; what it throws fails the row.
void addRow(std::string const & group, std::string const & peer, std::function<TimedWork()> make);

void addMeasuredRow(std::string const & group, std::string const & peer,
                    std::function<Figures()> measure);

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
            value_ = make_();
            make_ = nullptr;
        }
        return value_;
    }

private:
    std::function<Value()> make_;
    Value value_{};
};

}  // namespace tvk::bench
