// Cold ingest: a whole history into a new index.

#include <memory>
#include <stdexcept>
#include <unordered_map>

#include <benchmark/benchmark.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "QuorvaneCore/model/DedupKey.h"
#include "QuorvaneCore/model/Deduplicator.h"
#include "QuorvaneCore/providers/ClaudeProvider.h"
#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Comparison.h"
#include "benchmarks/support/LogFloor.h"
#include "benchmarks/support/UpsertFloor.h"

namespace quorvane::benchmarks {
namespace {

/// Of each call of a log the best event, in order of first appearance.
std::vector<UsageEvent> survivors(std::vector<UsageEvent> events) {
    std::vector<UsageEvent> kept;
    std::unordered_map<DedupKey, std::size_t> places;
    for (UsageEvent& event : events) {
        const auto [place, isNew] = places.try_emplace(DedupKey::of(event), kept.size());
        if (isNew) {
            kept.push_back(std::move(event));
        } else if (Deduplicator::isBetter(event.usage, kept[place->second].usage)) {
            kept[place->second] = std::move(event);
        }
    }
    return kept;
}

UpsertFloor::EventsByFile survivorsOfAll(const ClaudeProvider& provider, const std::vector<std::string>& files) {
    UpsertFloor::EventsByFile events;
    for (const std::string& file : files)
        events.push_back(survivors(provider.decodeFile(file, 0).events));
    return events;
}

/// The process remembers files that it has seen; a refresh into a new index reads them all the same, since it finds no
/// cursor there.
UsageIndexer::Stats coldIngest(const ClaudeProvider& provider, const std::string& database) {
    return UsageIndexer{std::make_shared<UsageIndex>(database)}.refresh(provider);
}

void checkIndex(const std::string& database, const ClaudeHistory::Totals& totals) {
    const UsageIndex index{database};
    const Calendar calendar{"UTC"};
    const UsageRollup rollup =
        index.rollup(ProviderID::Claude, 2 * ClaudeHistory::days, CostCalculator{}, ClaudeHistory::end(), calendar);
    if (index.eventCount(std::nullopt) != totals.calls) throw std::logic_error{"the index has not all calls"};
    if (rollup.last7d.usage != totals.tokens) throw std::logic_error{"the index has not all tokens"};
}

void coldIngestOfHistory(::benchmark::State& state) {
    const BenchmarkData::History& history = BenchmarkData::typicalHistory();
    const ClaudeProvider provider{history.projects};
    const std::vector<std::string> files = provider.jsonlFiles();
    static LogFloor logFloor{files};
    static const UpsertFloor::EventsByFile events = survivorsOfAll(provider, files);
    const ScratchFolder scratch;
    Comparison& comparison = Comparison::ofTimes("cold ingest of 1 GB", "decoding floor and raw upserts", 1.25);
    for (auto _ : state) {
        const std::string subjectPath = scratch.path("subject.sqlite");
        const std::string floorPath = scratch.path("floor.sqlite");
        scratch.clear();
        UsageIndexer::Stats stats;
        state.SetIterationTime(comparison.measure([&] { stats = coldIngest(provider, subjectPath); },
                                                  [&] {
                                                      logFloor.run();
                                                      UpsertFloor::run(floorPath, events);
                                                  }));
        if (stats.filesRead != history.totals.files) throw std::logic_error{"not all logs were read"};
        checkIndex(subjectPath, history.totals);
    }
    state.SetBytesProcessed(state.iterations() * history.totals.bytes);
    state.SetItemsProcessed(state.iterations() * history.totals.calls);
    state.counters["ratio"] = comparison.ratio();
}
BENCHMARK(coldIngestOfHistory)->Iterations(1)->Repetitions(5)->UseManualTime()->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
