// The Codex reader: decoding its rollouts, its quotas, and a very large rollout that grows.

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/providers/CodexProvider.h"
#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/CodexHistory.h"
#include "benchmarks/support/Comparison.h"
#include "benchmarks/support/LogFloor.h"
#include "benchmarks/support/RefreshProcess.h"
#include "benchmarks/support/WalkFloor.h"

namespace quorvane::benchmarks {
namespace {

struct Decoded {
    std::int64_t calls = 0;
    TokenUsage tokens;
};

Decoded decodeAll(const CodexProvider& provider, const std::vector<std::string>& files) {
    Decoded all;
    for (const std::string& file : files) {
        const DecodedFile decoded = provider.decodeFile(file, 0);
        all.calls += static_cast<std::int64_t>(decoded.events.size());
        for (const UsageEvent& event : decoded.events)
            all.tokens += event.usage;
    }
    return all;
}

void decodeCodexHistory(::benchmark::State& state) {
    const CodexHistory::OnDisk& history = CodexHistory::typical();
    const CodexHistory::Totals& totals = history.totals;
    const CodexProvider provider{history.sessions};
    const std::vector<std::string> files = provider.rolloutFiles();
    static LogFloor floor{files, LogFloor::Agent::Codex};
    Comparison& comparison =
        Comparison::ofTimes("decode 1 GB of Codex", "read, cut lines, parse those that matter", 1.5);
    for (auto _ : state) {
        Decoded decoded;
        std::int64_t parsed = 0;
        state.SetIterationTime(
            comparison.measure([&] { decoded = decodeAll(provider, files); }, [&] { parsed = floor.run(); }));
        if (decoded.calls != totals.calls || decoded.tokens != totals.tokens) throw std::logic_error{"calls are lost"};
        if (parsed != totals.tokenCounts + totals.otherLines) throw std::logic_error{"the floor lost lines"};
    }
    state.SetBytesProcessed(state.iterations() * totals.bytes);
    state.SetItemsProcessed(state.iterations() * totals.lines);
    state.counters["ratio"] = comparison.ratio();
    state.counters["lineP50"] = static_cast<double>(totals.medianLine);
    state.counters["lineP90"] = static_cast<double>(totals.line90);
    state.counters["lineP99"] = static_cast<double>(totals.line99);
    state.counters["longest"] = static_cast<double>(totals.longestLine);
}
BENCHMARK(decodeCodexHistory)->Iterations(1)->Repetitions(7)->UseManualTime()->Unit(::benchmark::kMillisecond);

/// The clock stands at the end of the history, so that no rollout counts as being written to.
class PinnedClock {
public:
    PinnedClock() { Clock::pin(CodexHistory::end()); }
    PinnedClock(const PinnedClock&) = delete;
    PinnedClock& operator=(const PinnedClock&) = delete;
    ~PinnedClock() { Clock::unpin(); }
};

void checkLimits(const CodexProvider::RateLimitState& limits) {
    if (!limits.current || !limits.current->secondary) throw std::logic_error{"no quota was found"};
}

void unchangedCodexLimits(::benchmark::State& state) {
    const PinnedClock clock;
    const CodexHistory::OnDisk& history = CodexHistory::manyFiles();
    const CodexProvider provider{history.sessions};
    checkLimits(provider.latestRateLimitState(Clock::now()));
    Comparison& comparison = Comparison::ofTimes("Codex limits, nothing changed", "readdir, stat of each file", 3);
    for (auto _ : state) {
        CodexProvider::RateLimitState limits;
        std::int64_t found = 0;
        state.SetIterationTime(comparison.measure([&] { limits = provider.latestRateLimitState(Clock::now()); },
                                                  [&] { found = WalkFloor::run(history.sessions); }));
        checkLimits(limits);
        if (found != history.totals.files) throw std::logic_error{"the floor missed a rollout"};
    }
    state.SetItemsProcessed(state.iterations() * history.totals.files);
    state.counters["ratio"] = comparison.ratio();
}
BENCHMARK(unchangedCodexLimits)->Iterations(9)->Repetitions(3)->UseManualTime()->Unit(::benchmark::kMillisecond);

/// Makes the one rollout of a folder longer by a line, and gives it back its old length at the end.
class GrownRollout {
public:
    explicit GrownRollout(const std::string& sessions)
        : path_{CodexProvider{sessions}.rolloutFiles().at(0)}, size_{std::filesystem::file_size(path_)} {}
    GrownRollout(const GrownRollout&) = delete;
    GrownRollout& operator=(const GrownRollout&) = delete;
    ~GrownRollout() { shrink(); }

    [[nodiscard]] const std::string& path() const noexcept { return path_; }
    void grow() const { std::ofstream{path_, std::ios::binary | std::ios::app} << CodexHistory::freshLine(); }
    void shrink() const {
        std::error_code ignored;
        std::filesystem::resize_file(path_, size_, ignored);
    }

private:
    std::string path_;
    std::uintmax_t size_;
};

/// The whole road, in a process of its own: the rollout is parsed again from its start and its rows are replaced.
void largeRolloutGrows(::benchmark::State& state) {
    const CodexHistory::OnDisk& history = CodexHistory::largeFile();
    const GrownRollout rollout{history.sessions};
    const ScratchFolder scratch;
    const std::string database = scratch.path("usage.sqlite");
    static LogFloor floor{{rollout.path()}, LogFloor::Agent::Codex};
    Comparison& times =
        Comparison::ofTimes("2 GB rollout, one line more", "read, cut lines, parse those that matter", 0);
    const double longest = static_cast<double>(history.totals.longestLine) / (1 << 20);
    Comparison& memory = Comparison::ofMemory("peak memory, 2 GB rollout", 64 + longest);
    for (auto _ : state) {
        scratch.clear();
        const RefreshProcess first = RefreshProcess::run(history.sessions, database, "codex");
        rollout.grow();
        const RefreshProcess grown = RefreshProcess::run(history.sessions, database, "codex");
        rollout.shrink();
        const Timing least = Timing::of([] { static_cast<void>(floor.run()); });
        if (first.events != history.totals.calls || grown.events != first.events + 1)
            throw std::logic_error{"the index has not all calls"};
        times.add(grown.timing, least);
        const double mebibytes = static_cast<double>(grown.peakKibibytes) / 1024;
        memory.addMebibytes(mebibytes);
        state.SetIterationTime(grown.timing.seconds);
        state.counters["peakMiB"] = mebibytes;
        state.counters["calls"] = static_cast<double>(grown.events);
    }
}
BENCHMARK(largeRolloutGrows)->Iterations(1)->Repetitions(3)->UseManualTime()->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
