// The desktop widget from its start to a drawn picture, and what it costs while nothing happens.

#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Process.h"

namespace quorvane::benchmarks {
namespace {

/// CPU time counts here: a render is to take less than 300 ms of it.
void renderWidget(::benchmark::State& state, const std::string& family, const std::string& scale) {
    const ScratchFolder home;
    const std::string picture = home.path("widget.png");
    const std::vector<std::string> command{
        QUORVANE_WIDGET_PROGRAM, "--render", picture, "--family", family, "--scale", scale};
    double cpuSeconds = 0;
    for (auto _ : state) {
        std::filesystem::remove(picture);
        const ProcessResult run = runProcess(command, {"HOME=" + home.path()});
        if (!run.isSuccess || !std::filesystem::exists(picture)) {
            state.SkipWithError("no picture was drawn");
            return;
        }
        cpuSeconds += run.cpuSeconds;
        state.SetIterationTime(run.seconds);
    }
    state.counters["cpu_ms"] = ::benchmark::Counter(cpuSeconds * 1000, ::benchmark::Counter::kAvgIterations);
}
BENCHMARK_CAPTURE(renderWidget, large, "large", "1")->Iterations(21)->UseManualTime()->Unit(::benchmark::kMillisecond);
BENCHMARK_CAPTURE(renderWidget, largeAtTwice, "large", "2")
    ->Iterations(21)
    ->UseManualTime()
    ->Unit(::benchmark::kMillisecond);

/// The CPU seconds of the program with one window open for so many seconds, on a platform without a screen.
double cpuSecondsOfRun(const std::string& home, int seconds) {
    return runProcess({"/usr/bin/timeout", "--preserve-status", std::to_string(seconds), QUORVANE_WIDGET_PROGRAM},
                      {"HOME=" + home, "QT_QPA_PLATFORM=offscreen"})
        .cpuSeconds;
}

/// What a minute more of an open window costs: its drawing anew once a minute, and nothing else.
void idleWidget(::benchmark::State& state) {
    const ScratchFolder home;
    constexpr int minutes = 2;
    for (auto _ : state) {
        const double start = cpuSecondsOfRun(home.path(), 5);
        const double whole = cpuSecondsOfRun(home.path(), 5 + 60 * minutes);
        state.SetIterationTime(whole - start);
        state.counters["percent_of_a_core"] = (whole - start) / (60 * minutes) * 100;
    }
}
BENCHMARK(idleWidget)->Iterations(1)->UseManualTime()->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
