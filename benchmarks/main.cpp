// Runs the benchmarks, then prints what each took beside its floor. Every flag of the benchmark library works as usual.

#include <cstdio>
#include <exception>

#include <benchmark/benchmark.h>

#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Comparison.h"

int main(int argumentCount, char** arguments) {
    ::benchmark::Initialize(&argumentCount, arguments);
    if (::benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) return 2;
    try {
        ::benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", arguments[0], failure.what());
        return 1;
    }
    ::benchmark::Shutdown();
    quorvane::benchmarks::Comparison::printAll();
    const double scale = quorvane::benchmarks::BenchmarkData::scale();
    if (scale < 1) std::fprintf(stderr, "all sizes times %g; the targets are for full size\n", scale);
    return 0;
}
