// OpenCode's database, for its own reader and for Muse Spark's.

#include <filesystem>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>

#include "QuorvaneCore/providers/MuseSparkProvider.h"
#include "QuorvaneCore/providers/OpenCodeProvider.h"
#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Comparison.h"
#include "benchmarks/support/OpenCodeHistory.h"

namespace quorvane::benchmarks {
namespace {

void check(const std::vector<UsageEvent>& events, std::int64_t calls, const TokenUsage& expected) {
    TokenUsage tokens;
    for (const UsageEvent& event : events)
        tokens += event.usage;
    if (static_cast<std::int64_t>(events.size()) != calls || tokens != expected)
        throw std::logic_error{"calls are lost"};
}

void decodeOpenCodeDatabase(::benchmark::State& state) {
    const OpenCodeHistory::OnDisk& history = OpenCodeHistory::typical();
    const OpenCodeHistory::Totals& totals = history.totals;
    Comparison& comparison = Comparison::ofTimes("decode OpenCode's database", "its statements, each column read", 1.2);
    for (auto _ : state) {
        std::vector<UsageEvent> events;
        std::int64_t rows = 0;
        state.SetIterationTime(comparison.measure([&] { events = OpenCodeProvider::decodeDatabase(history.database); },
                                                  [&] { rows = OpenCodeFloor::sessions(history.database); }));
        check(events, totals.sessions, totals.others);
        if (rows < totals.sessions) throw std::logic_error{"the floor lost rows"};
    }
    state.SetItemsProcessed(state.iterations() * totals.messages);
    state.counters["ratio"] = comparison.ratio();
}
BENCHMARK(decodeOpenCodeDatabase)->Iterations(1)->Repetitions(7)->UseManualTime()->Unit(::benchmark::kMillisecond);

void decodeMuseSparkDatabase(::benchmark::State& state) {
    const OpenCodeHistory::OnDisk& history = OpenCodeHistory::typical();
    const OpenCodeHistory::Totals& totals = history.totals;
    Comparison& comparison =
        Comparison::ofTimes("decode Muse Spark's share of it", "its statements, each column read", 1.2);
    for (auto _ : state) {
        std::vector<UsageEvent> events;
        std::int64_t rows = 0;
        state.SetIterationTime(comparison.measure([&] { events = MuseSparkProvider::decodeDatabase(history.database); },
                                                  [&] { rows = OpenCodeFloor::messages(history.database); }));
        check(events, totals.sparkMessages, totals.spark);
        if (rows < totals.sparkMessages) throw std::logic_error{"the floor lost rows"};
    }
    state.SetItemsProcessed(state.iterations() * totals.messages);
    state.counters["ratio"] = comparison.ratio();
}
BENCHMARK(decodeMuseSparkDatabase)->Iterations(1)->Repetitions(7)->UseManualTime()->Unit(::benchmark::kMillisecond);

/// What a refresh reads when one message has come since the last one.
void readNewMuseSparkMessage(::benchmark::State& state) {
    const ScratchFolder folder;
    const std::string database = folder.path("opencode.db");
    std::filesystem::copy_file(OpenCodeHistory::typical().database, database);
    const MuseSparkProvider provider{folder.path()};
    const std::int64_t known = provider.decodeFile(database, 0).consumed;
    const std::size_t knownAtThatTime = provider.decodeFile(database, known).events.size();
    OpenCodeHistory::addSparkMessage(database, known + 1);
    Comparison& comparison = Comparison::ofTimes("Muse Spark, one message more", "its statements, each column read", 0);
    for (auto _ : state) {
        DecodedFile decoded;
        std::int64_t rows = 0;
        state.SetIterationTime(comparison.measure([&] { decoded = provider.decodeFile(database, known); },
                                                  [&] { rows = OpenCodeFloor::messages(database, known); }));
        if (decoded.events.size() != knownAtThatTime + 1 || decoded.consumed != known + 1) {
            throw std::logic_error{"the new message was not read, or others were"};
        }
        if (rows < 1) throw std::logic_error{"the floor lost rows"};
    }
    state.counters["ratio"] = comparison.ratio();
}
BENCHMARK(readNewMuseSparkMessage)->Iterations(1)->Repetitions(7)->UseManualTime()->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
