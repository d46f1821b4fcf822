// Building the two snapshot records and encoding and writing their files, from an index of a million events.

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include <benchmark/benchmark.h>

#include "QuorvaneHost/SnapshotFiles.h"
#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/EventsDatabase.h"

namespace quorvane::benchmarks {
namespace {

/// A home directory in which two agents have data, so that they have rows; the events come from the index.
class HomeOfTwoAgents {
public:
    HomeOfTwoAgents() {
        std::filesystem::create_directories(home_.path(".claude/projects"));
        std::filesystem::create_directories(home_.path(".codex/sessions"));
        ::setenv("HOME", home_.path().c_str(), 1);
    }

private:
    ScratchFolder home_;
};

host::SnapshotFiles build(const UsageIndex& index, const std::vector<host::Reader>& readers) {
    const Date now = EventsDatabase::end();
    return host::SnapshotFiles::build(index, readers, host::LimitsReport{.now = now}, 30, CostCalculator{}, now,
                                      Calendar::current());
}

void buildSnapshots(::benchmark::State& state) {
    const HomeOfTwoAgents home;
    const UsageIndex index{EventsDatabase::path(BenchmarkData::scaled(1'000'000))};
    const std::vector<host::Reader> readers = host::allReaders();
    if (build(index, readers).automation.providers.size() != 2) throw std::logic_error{"not two rows"};
    for (auto _ : state)
        ::benchmark::DoNotOptimize(build(index, readers));
}
BENCHMARK(buildSnapshots)->Iterations(1)->Repetitions(5)->Unit(::benchmark::kMillisecond);

void writeSnapshots(::benchmark::State& state) {
    const HomeOfTwoAgents home;
    const UsageIndex index{EventsDatabase::path(BenchmarkData::scaled(1'000'000))};
    const host::SnapshotFiles files = build(index, host::allReaders());
    for (auto _ : state) {
        if (!files.write(true)) throw std::logic_error{"nothing was written"};
    }
}
BENCHMARK(writeSnapshots)->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
