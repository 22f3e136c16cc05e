#include "bench/Runner.h"

#include <algorithm>
#include <ctime>
#include <exception>
#include <optional>

#include "tests/support/AllocationCounter.h"

namespace tvk::bench {

namespace {

using Nanoseconds = std::chrono::nanoseconds;

/// Of this thread alone, so that other programs cost a row no more than its caches.
Nanoseconds processorTime() {
    std::timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + Nanoseconds(time.tv_nsec);
}

Nanoseconds timeOf(std::size_t passes, std::function<void()> const & pass) {
    Nanoseconds const start = processorTime();
    for (std::size_t i = 0; i < passes; ++i) {
        pass();
    }
    return processorTime() - start;
}

/// Lines of JSON about one row. Names and texts of failures hold nothing that JSON would escape, but
/// for what `plain` replaces.
class Report {
public:
    Report(std::FILE * output, Row const & row) : output_(output), name_(row.name()) {}

    void begins() const {
        std::fprintf(output_, "{\"row\": \"%s\", \"begins\": true}\n", name_.c_str());
        std::fflush(output_);
    }
    void failed(std::string text) const {
        std::replace_if(
            text.begin(), text.end(),
            [](char c) { return c == '"' || c == '\\' || static_cast<unsigned char>(c) < ' '; },
            '\'');
        std::fprintf(output_, "{\"row\": \"%s\", \"error\": \"%s\"}\n", name_.c_str(),
                     text.c_str());
    }
    void measured(Figures const & figures) const {
        std::fprintf(output_, "{\"row\": \"%s\"", name_.c_str());
        for (auto const & [name, value] : figures) {
            std::fprintf(output_, ", \"%s\": %.17g", name, value);
        }
        std::fprintf(output_, "}\n");
    }
    void timed(Figures const & figures, std::vector<double> const & times) const {
        std::fprintf(output_, "{\"row\": \"%s\"", name_.c_str());
        for (auto const & [name, value] : figures) {
            std::fprintf(output_, ", \"%s\": %.17g", name, value);
        }
        char const * separator = ", \"nanoseconds\": [";
        for (double const time : times) {
            std::fprintf(output_, "%s%.6g", std::exchange(separator, ", "), time);
        }
        std::fprintf(output_, "]}\n");
    }

private:
    std::FILE * output_;
    std::string name_;
};

/// Runs `work` and reports what it throws. False: it failed.
template <class Work>
bool survives(Report const & report, Work work) {
    try {
        work();
        return true;
    } catch (Disagreement const &) {
        report.failed("the result differs from that of tvk");
    } catch (std::exception const & failure) {
        report.failed(failure.what());
    } catch (char const * text) {
        report.failed(text);
    } catch (...) {
        report.failed("it threw");
    }
    return false;
}

/// A row that takes its turns.
class Contender {
public:
    Contender(Row const & row, std::FILE * output, Nanoseconds slice)
        : report_(output, row), slice_(slice) {
        report_.begins();
        isReady_ = survives(report_, [&] {
            work_ = row.make();
            settle();
        });
    }

    bool isReady() const { return isReady_; }

    void takeTurn() {
        report_.begins();
        isReady_ = survives(report_, [this] {
            work_.begin();
            if (passes_ > 1) {
                work_.pass();  // has its data near again
            }
            auto const time = static_cast<double>(timeOf(passes_, work_.pass).count());
            times_.push_back(time / static_cast<double>(passes_) / documents());
        });
    }

    void report() const {
        Figures figures = {{"bytes", static_cast<double>(work_.size.bytes)},
                           {"documents", documents()}};
        if (allocations_) {
            figures.push_back({"allocations", *allocations_});
        }
        report_.timed(figures, times_);
    }

private:
    double documents() const { return static_cast<double>(work_.size.documents); }

    /// Fills what is kept from pass to pass, counts the allocations of a pass, and finds out how many
    /// passes fill a slice.
    void settle() {
        work_.begin();
        work_.pass();
        test::AllocationCounter const allocations;
        work_.pass();
        if (test::AllocationCounter::available()) {
            allocations_ = static_cast<double>(allocations.count()) / documents();
        }
        Nanoseconds time = timeOf(passes_, work_.pass);
        while (time < slice_ / 4) {
            passes_ *= 2;
            time = timeOf(passes_, work_.pass);
        }
        auto const wanted = static_cast<double>(passes_) * static_cast<double>(slice_.count()) /
                            static_cast<double>(time.count());
        passes_ = std::max<std::size_t>(1, static_cast<std::size_t>(wanted));
    }

    Report report_;
    Nanoseconds slice_;
    TimedWork work_{};
    bool isReady_ = false;
    std::optional<double> allocations_;
    std::size_t passes_ = 1;
    std::vector<double> times_;
};

void timeGroup(std::span<Row const> rows, Effort effort, std::FILE * output) {
    std::vector<Contender> contenders;
    for (Row const & row : rows) {
        Contender contender(row, output, effort.slice);
        if (contender.isReady()) {
            contenders.push_back(std::move(contender));
        }
    }
    for (int round = 0; round < effort.rounds; ++round) {
        for (std::size_t turn = 0; turn < contenders.size(); ++turn) {
            contenders[(turn + static_cast<std::size_t>(round)) % contenders.size()].takeTurn();
        }
        std::erase_if(contenders, [](Contender const & each) { return !each.isReady(); });
    }
    for (Contender const & contender : contenders) {
        contender.report();
    }
}

void measure(Row const & row, std::FILE * output) {
    Report const report(output, row);
    report.begins();
    survives(report, [&] { report.measured(row.measure()); });
}

}  // namespace

void runRows(std::span<Row const> rows, Effort effort, std::FILE * output) {
    while (!rows.empty()) {
        std::size_t count = 1;
        while (count < rows.size() && rows[count].group == rows.front().group) {
            ++count;
        }
        if (rows.front().measure) {
            for (Row const & row : rows.first(count)) {
                measure(row, output);
            }
        } else {
            timeGroup(rows.first(count), effort, output);
        }
        std::fflush(output);
        rows = rows.subspan(count);
    }
}

}  // namespace tvk::bench
