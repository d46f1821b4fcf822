// The desktop widget from its start to a drawn picture, and what it costs while nothing happens.

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "QuorvaneCore/snapshots/WidgetSnapshotStore.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/WidgetPreviewData.h"
#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Process.h"

namespace quorvane::benchmarks {
namespace {

/// A home directory with a file for the widget to read, of six providers and all timeframes.
class HomeOfTheWidget {
public:
    HomeOfTheWidget() {
        ::setenv("HOME", home_.path().c_str(), 1);
        WidgetSnapshotStore{}.write(WidgetPreviewData::snapshot());
    }

    [[nodiscard]] std::string variable() const { return "HOME=" + home_.path(); }
    [[nodiscard]] std::string path(const std::string& name) const { return home_.path(name); }

private:
    ScratchFolder home_;
};

/// CPU time counts here: a render is to take less than 300 ms of it.
void renderWidget(::benchmark::State& state, const std::string& family, const std::string& scale) {
    const HomeOfTheWidget home;
    const std::string picture = home.path("widget.png");
    const std::vector<std::string> command{
        QUORVANE_WIDGET_PROGRAM, "--render", picture, "--family", family, "--scale", scale};
    double cpuSeconds = 0;
    for (auto _ : state) {
        std::filesystem::remove(picture);
        const ProcessResult run = runProcess(command, {home.variable()});
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
double cpuSecondsOfRun(const HomeOfTheWidget& home, int seconds) {
    return runProcess({"/usr/bin/timeout", "--preserve-status", std::to_string(seconds), QUORVANE_WIDGET_PROGRAM},
                      {home.variable(), "QT_QPA_PLATFORM=offscreen"})
        .cpuSeconds;
}

/// What a minute more of an open window costs: its drawing anew once a minute, and nothing else.
void idleWidget(::benchmark::State& state) {
    const HomeOfTheWidget home;
    constexpr int minutes = 2;
    for (auto _ : state) {
        const double start = cpuSecondsOfRun(home, 5);
        const double whole = cpuSecondsOfRun(home, 5 + 60 * minutes);
        state.SetIterationTime(whole - start);
        state.counters["percent_of_a_core"] = (whole - start) / (60 * minutes) * 100;
    }
}
BENCHMARK(idleWidget)->Iterations(1)->UseManualTime()->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
