// Writes one generated history, for measurements by hand: generate_history DIR BYTES FILES SEED

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "benchmarks/support/ClaudeHistory.h"

int main(int argumentCount, char** arguments) {
    using quorvane::benchmarks::ClaudeHistory;
    if (argumentCount != 5) {
        std::fprintf(stderr, "usage: %s DIR BYTES FILES SEED\n", arguments[0]);
        return 2;
    }
    try {
        const ClaudeHistory::Totals totals =
            ClaudeHistory::write(arguments[1], {.shape = ClaudeHistory::Shape::Typical,
                                                .bytes = std::strtoll(arguments[2], nullptr, 10),
                                                .files = std::strtoll(arguments[3], nullptr, 10),
                                                .seed = std::strtoull(arguments[4], nullptr, 10)});
        const auto print = [](const char* what, std::int64_t count) {
            std::printf("%-15s %lld\n", what, static_cast<long long>(count));
        };
        print("files", totals.files);
        print("bytes", totals.bytes);
        print("lines", totals.lines);
        print("usage lines", totals.usageLines);
        print("usage bytes", totals.usageBytes);
        print("longest line", totals.longestLine);
        print("calls", totals.calls);
        print("of subagents", totals.subagentCalls);
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", arguments[0], failure.what());
        return 1;
    }
}
