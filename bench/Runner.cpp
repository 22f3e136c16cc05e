#include "bench/Runner.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "bench/Turns.h"
#include "tests/support/AllocationCounter.h"

namespace tvk::bench {

namespace {

using Nanoseconds = std::chrono::nanoseconds;

/// Times a pass by Google Benchmark: processor time of this thread alone, so that other programs cost a
/// row no more than its caches. The first run finds out how many passes fill a slice.
class Stopwatch {
public:
    Stopwatch(std::string name, std::function<void()> pass, Nanoseconds slice)
        : name_(std::move(name)), pass_(std::move(pass)), slice_(slice) {}

    /// Nanoseconds of a pass.
    double run() {
        benchmark::ClearRegisteredBenchmarks();
        benchmark::internal::Benchmark * const entry =
            benchmark::RegisterBenchmark(name_.c_str(), [this](benchmark::State & state) {
                for ([[maybe_unused]] auto const turn : state) {
                    pass_();
                }
            });
        entry->Unit(benchmark::kNanosecond);
        if (passes_ == 0) {
            entry->MinTime(std::chrono::duration<double>(slice_).count());
        } else {
            entry->Iterations(passes_);
        }
        LastRun last;
        benchmark::RunSpecifiedBenchmarks(&last, ".");
        passes_ = last.passes;
        return last.nanoseconds;
    }

private:
    /// Keeps what was measured, and prints nothing.
    struct LastRun : benchmark::BenchmarkReporter {
        bool ReportContext(Context const &) override { return true; }
        void ReportRuns(std::vector<Run> const & runs) override {
            for (Run const & run : runs) {
                passes = run.iterations;
                nanoseconds = run.GetAdjustedCPUTime();
            }
        }

        benchmark::IterationCount passes = 0;
        double nanoseconds = 0;
    };

    std::string name_;
    std::function<void()> pass_;
    Nanoseconds slice_;
    benchmark::IterationCount passes_ = 0;
};

/// Lines of JSON about one row. Names hold nothing that JSON would escape.
class Report {
public:
    Report(std::FILE * output, Row const & row) : output_(output), name_(row.name()) {}

    void failed(std::string text) const {
        std::replace_if(
            text.begin(), text.end(),
            [](char c) { return c == '"' || c == '\\' || static_cast<unsigned char>(c) < ' '; },
            '\'');
        print("{\"row\": \"" + name_ + "\", \"error\": \"" + text + "\"}");
    }
    void measured(Figures const & figures, std::vector<double> const & times = {}) const {
        std::string line = "{\"row\": \"" + name_ + '"';
        for (auto const & [name, value] : figures) {
            line.append(", \"").append(name).append("\": ").append(numberText(value));
        }
        char const * separator = ", \"nanoseconds\": [";
        for (double const time : times) {
            line += std::exchange(separator, ", ") + numberText(time);
        }
        print(line + (times.empty() ? "}" : "]}"));
    }

private:
    static std::string numberText(double number) {
        char text[32];
        std::snprintf(text, sizeof text, "%.9g", number);
        return text;
    }
    void print(std::string const & line) const {
        std::fprintf(output_, "%s\n", line.c_str());
        std::fflush(output_);
    }

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
class Contender : public TurnTaker {
public:
    Contender(Row const & row, std::FILE * output, Nanoseconds slice)
        : row_(row), report_(output, row), slice_(slice) {}

    bool setUp() override {
        return survives(report_, [this] {
            work_ = row_.make();
            settle();
        });
    }

    bool takeTurn() override {
        return survives(report_, [this] {
            work_.begin();
            times_.push_back(stopwatch_->run() / documents());
        });
    }

    void end() override {
        Figures figures = {{"bytes", static_cast<double>(work_.size.bytes)},
                           {"documents", documents()}};
        if (allocations_) {
            figures.push_back({"allocations", *allocations_});
        }
        report_.measured(figures, times_);
    }

    void died(std::string const & reason) override { report_.failed(reason); }

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
        stopwatch_.emplace(row_.name(), work_.pass, slice_);
        stopwatch_->run();
    }

    Row const & row_;
    Report report_;
    Nanoseconds slice_;
    TimedWork work_{};
    std::optional<double> allocations_;
    std::optional<Stopwatch> stopwatch_;
    std::vector<double> times_;
};

/// A row that measures once, when it is set up.
class Measured : public TurnTaker {
public:
    Measured(Row const & row, std::FILE * output) : row_(row), report_(output, row) {}

    bool setUp() override {
        return survives(report_, [this] { figures_ = row_.measure(); });
    }
    bool takeTurn() override { return true; }
    void end() override { report_.measured(figures_); }
    void died(std::string const & reason) override { report_.failed(reason); }

private:
    Row const & row_;
    Report report_;
    Figures figures_;
};

void runGroup(std::span<Row const> rows, Effort effort, std::FILE * output) {
    std::vector<std::unique_ptr<TurnTaker>> takers;
    for (Row const & row : rows) {
        if (row.measure) {
            takers.push_back(std::make_unique<Measured>(row, output));
        } else {
            takers.push_back(std::make_unique<Contender>(row, output, effort.slice));
        }
    }
    takeTurns(takers, rows.front().measure ? 0 : effort.rounds, effort.patience);
}

}  // namespace

void runRows(std::span<Row const> rows, Effort effort, std::FILE * output) {
    while (!rows.empty()) {
        std::string const & group = rows.front().group;
        std::fprintf(output, "{\"group\": \"%s\"}\n", group.c_str());
        std::fflush(output);
        auto const end = std::find_if(rows.begin(), rows.end(),
                                      [&group](Row const & row) { return row.group != group; });
        auto const count = static_cast<std::size_t>(end - rows.begin());
        runGroup(rows.first(count), effort, output);
        rows = rows.subspan(count);
    }
}

}  // namespace tvk::bench
