#include "bench/Runner.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "bench/Turns.h"
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
            if (passes_ > 1) {
                work_.pass();  // has its data near again
            }
            auto const time = static_cast<double>(timeOf(passes_, work_.pass).count());
            times_.push_back(time / static_cast<double>(passes_) / documents());
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
        Nanoseconds time = timeOf(passes_, work_.pass);
        while (time < slice_ / 4) {
            passes_ *= 2;
            time = timeOf(passes_, work_.pass);
        }
        auto const wanted = static_cast<double>(passes_) * static_cast<double>(slice_.count()) /
                            static_cast<double>(time.count());
        passes_ = std::max<std::size_t>(1, static_cast<std::size_t>(wanted));
    }

    Row const & row_;
    Report report_;
    Nanoseconds slice_;
    TimedWork work_{};
    std::optional<double> allocations_;
    std::size_t passes_ = 1;
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
