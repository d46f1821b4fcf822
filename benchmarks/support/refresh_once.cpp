// A process that does one thing, so that its memory and the state of its caches are those of that thing alone:
// refresh_once AGENT ROOT DATABASE brings an index up to date with the logs of AGENT ("claude" or "codex") below ROOT
// and prints, in this order, seconds, seconds of processor time, peak memory in KiB, files read, files skipped, events.

#include <cstdio>
#include <exception>
#include <memory>
#include <string_view>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/ingest/UsageIndexer.h"
#include "QuorvaneCore/providers/ClaudeProvider.h"
#include "QuorvaneCore/providers/CodexProvider.h"
#include "benchmarks/support/Comparison.h"
#include "benchmarks/support/PeakMemory.h"

int main(int argumentCount, char** arguments) {
    using namespace quorvane;
    if (argumentCount != 4) {
        std::fprintf(stderr, "usage: %s AGENT ROOT DATABASE\n", arguments[0]);
        return 2;
    }
    try {
        const bool isCodex = std::string_view{arguments[1]} == "codex";
        const ClaudeProvider claude{arguments[2]};
        const CodexProvider codex{arguments[2]};
        const UsageIndexer indexer{std::make_shared<UsageIndex>(arguments[3])};
        UsageIndexer::Stats stats;
        const auto timing =
            benchmarks::Timing::of([&] { stats = isCodex ? indexer.refresh(codex) : indexer.refresh(claude); });
        std::printf("%.9f %.9f %lld %lld %lld %lld\n", timing.seconds, timing.cpuSeconds,
                    static_cast<long long>(benchmarks::peakMemoryKibibytes()), static_cast<long long>(stats.filesRead),
                    static_cast<long long>(stats.filesSkipped), static_cast<long long>(stats.eventsIngested));
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", arguments[0], failure.what());
        return 1;
    }
}
