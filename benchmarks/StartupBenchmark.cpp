// The command line program from its start to its end, beside a program that does nothing.

#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Comparison.h"
#include "benchmarks/support/Process.h"

namespace quorvane::benchmarks {
namespace {

constexpr const char* floorName = "a program that does nothing";

/// Runs the program once untimed, then beside the floor.
void timeProgram(::benchmark::State& state, const std::vector<std::string>& arguments,
                 const std::vector<std::string>& environment, Comparison& comparison) {
    const ProcessResult first = runProcess(arguments, environment);
    if (!first.isSuccess || first.output.empty()) {
        state.SkipWithError("the program failed, or said nothing");
        return;
    }
    for (auto _ : state) {
        const ProcessResult floor = runProcess({"/bin/true"});
        const ProcessResult run = runProcess(arguments, environment);
        comparison.add({run.seconds, run.cpuSeconds}, {floor.seconds, floor.cpuSeconds});
        state.SetIterationTime(run.seconds);
    }
}

void startVersion(::benchmark::State& state) {
    timeProgram(state, {QUORVANE_PROGRAM, "--version"}, {}, Comparison::ofTimes("quorvane --version", floorName, 0));
}
BENCHMARK(startVersion)->Iterations(21)->UseManualTime()->Unit(::benchmark::kMillisecond);

/// A home directory with the typical history, and an index that is up to date after the first run.
void startSummary(::benchmark::State& state) {
    const BenchmarkData::History& history = BenchmarkData::typicalHistory();
    const ScratchFolder home;
    std::filesystem::create_directories(home.path(".claude"));
    std::filesystem::create_directory_symlink(history.projects, home.path(".claude/projects"));
    timeProgram(state, {QUORVANE_PROGRAM, "--now", "2026-09-14T12:00:00Z", "summary"}, {"HOME=" + home.path()},
                Comparison::ofTimes("quorvane summary, 3000 files", floorName, 0));
}
BENCHMARK(startSummary)->Iterations(11)->UseManualTime()->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
