#include "bench/Rows.h"

#include "tests/support/AllocationCounter.h"

namespace tvk::bench {

void timePasses(benchmark::State & state, PassSize size, std::function<void()> const & pass) {
    pass();  // fills what is kept from pass to pass
    test::AllocationCounter allocations;
    pass();
    auto const documents = static_cast<double>(size.documents);
    if (test::AllocationCounter::available()) {
        state.counters["allocs_per_doc"] = static_cast<double>(allocations.count()) / documents;
    }
    for (auto _ : state) {
        pass();
    }
    auto const passes = static_cast<std::int64_t>(state.iterations());
    if (size.bytes > 0) {
        state.SetBytesProcessed(passes * static_cast<std::int64_t>(size.bytes));
    }
    state.SetItemsProcessed(passes * static_cast<std::int64_t>(size.documents));
}

void addRow(std::string const & name, std::function<void(benchmark::State &)> run) {
    benchmark::RegisterBenchmark(name.c_str(), [run](benchmark::State & state) {
        try {
            run(state);
        } catch (Disagreement const &) {
            state.SkipWithError("the result differs from that of tvk");
        } catch (std::exception const & failure) {
            state.SkipWithError(failure.what());
        }
    });
}

}  // namespace tvk::bench
