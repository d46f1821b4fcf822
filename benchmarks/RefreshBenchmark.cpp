// Refreshes of an index that is up to date, or nearly.

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "QuorvaneCore/providers/ClaudeProvider.h"
#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Comparison.h"
#include "benchmarks/support/RefreshProcess.h"
#include "benchmarks/support/WalkFloor.h"

namespace quorvane::benchmarks {
namespace {

constexpr const char* walkFloorName = "readdir, stat of each file";

/// An index that is up to date with the many small logs. Built by another process, so that this one knows no file.
struct UpToDateIndex {
    UpToDateIndex() {
        const RefreshProcess built = RefreshProcess::run(history.projects, database);
        if (built.filesRead != history.totals.files) throw std::logic_error{"not all logs were read"};
    }

    const BenchmarkData::History& history = BenchmarkData::manyFiles();
    ScratchFolder scratch;
    std::string database = scratch.path("usage.sqlite");
};

void checkUnchanged(std::int64_t read, std::int64_t skipped, const ClaudeHistory::Totals& totals) {
    if (read != 0 || skipped != totals.files) throw std::logic_error{"an unchanged log was read"};
}

void checkWalk(std::int64_t found, const ClaudeHistory::Totals& totals) {
    if (found != totals.files) throw std::logic_error{"the floor missed a log"};
}

void unchangedRefreshOfFreshProcess(::benchmark::State& state) {
    const UpToDateIndex index;
    const ClaudeHistory::Totals& totals = index.history.totals;
    Comparison& comparison = Comparison::ofTimes("unchanged refresh, new process", walkFloorName, 3);
    for (auto _ : state) {
        const RefreshProcess refresh = RefreshProcess::run(index.history.projects, index.database);
        checkUnchanged(refresh.filesRead, refresh.filesSkipped, totals);
        std::int64_t found = 0;
        const Timing floor = Timing::of([&] { found = WalkFloor::run(index.history.projects); });
        checkWalk(found, totals);
        comparison.add(refresh.timing, floor);
        state.SetIterationTime(refresh.timing.seconds);
    }
    state.SetItemsProcessed(state.iterations() * totals.files);
    state.counters["ratio"] = comparison.ratio();
}
BENCHMARK(unchangedRefreshOfFreshProcess)
    ->Iterations(1)
    ->Repetitions(9)
    ->UseManualTime()
    ->Unit(::benchmark::kMillisecond);

void unchangedRefresh(::benchmark::State& state) {
    const UpToDateIndex index;
    const ClaudeHistory::Totals& totals = index.history.totals;
    const ClaudeProvider provider{index.history.projects};
    const UsageIndexer indexer{std::make_shared<UsageIndex>(index.database)};
    static_cast<void>(indexer.refresh(provider));
    Comparison& comparison = Comparison::ofTimes("unchanged refresh, again", walkFloorName, 3);
    for (auto _ : state) {
        UsageIndexer::Stats stats;
        std::int64_t found = 0;
        state.SetIterationTime(comparison.measure([&] { stats = indexer.refresh(provider); },
                                                  [&] { found = WalkFloor::run(index.history.projects); }));
        checkUnchanged(stats.filesRead, stats.filesSkipped, totals);
        checkWalk(found, totals);
    }
    state.SetItemsProcessed(state.iterations() * totals.files);
    state.counters["ratio"] = comparison.ratio();
}
BENCHMARK(unchangedRefresh)->Iterations(9)->Repetitions(3)->UseManualTime()->Unit(::benchmark::kMillisecond);

/// Makes a log longer and gives it back its old length at the end.
class GrowingLog {
public:
    explicit GrowingLog(std::string path) : path_{std::move(path)}, size_{std::filesystem::file_size(path_)} {}
    GrowingLog(const GrowingLog&) = delete;
    GrowingLog& operator=(const GrowingLog&) = delete;
    ~GrowingLog() {
        std::error_code ignored;
        std::filesystem::resize_file(path_, size_, ignored);
    }

    void append(const std::string& line) const { std::ofstream{path_, std::ios::binary | std::ios::app} << line; }

private:
    std::string path_;
    std::uintmax_t size_;
};

void tailAppend(::benchmark::State& state) {
    const UpToDateIndex index;
    const ClaudeProvider provider{index.history.projects};
    const auto store = std::make_shared<UsageIndex>(index.database);
    const UsageIndexer indexer{store};
    static_cast<void>(indexer.refresh(provider));
    const GrowingLog log{provider.jsonlFiles().at(static_cast<std::size_t>(index.history.totals.files / 2))};
    const CostCalculator calculator;
    const Calendar calendar = Calendar::current();
    const ProviderID claude = ProviderID::Claude;
    Comparison& comparison = Comparison::ofTimes("one line more, and 30 days", "unchanged refresh", 2);
    std::int64_t appended = 0;
    for (auto _ : state) {
        log.append(ClaudeHistory::freshLine(appended++));
        UsageIndexer::Stats stats;
        UsageWindowSummaries summaries;
        // The floor must not be the one to find the new line, so it always comes second.
        const Timing subject = Timing::of([&] {
            stats = indexer.refresh(provider);
            summaries = store->windowSummaries({&claude, 1}, 30, calculator, ClaudeHistory::end(), calendar);
        });
        UsageIndexer::Stats unchanged;
        const Timing floor = Timing::of([&] { unchanged = indexer.refresh(provider); });
        if (stats.filesRead != 1 || stats.eventsIngested != 1) throw std::logic_error{"the new line was not read"};
        if (summaries.aggregate.rollup.last7d.eventCount < appended) throw std::logic_error{"the call is in no sum"};
        checkUnchanged(unchanged.filesRead, unchanged.filesSkipped, index.history.totals);
        comparison.add(subject, floor);
        state.SetIterationTime(subject.seconds);
    }
    state.counters["ratio"] = comparison.ratio();
}
BENCHMARK(tailAppend)->Iterations(9)->UseManualTime()->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
