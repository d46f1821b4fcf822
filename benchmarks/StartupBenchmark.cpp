// The command line program from its start to its end, beside a program that does nothing; and what status bars run
// every few seconds, beside the refresh that it cannot do without.

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

/// Runs the program once untimed, then beside the floor, which gets the same environment.
void timeProgram(::benchmark::State& state, const std::vector<std::string>& arguments,
                 const std::vector<std::string>& environment, Comparison& comparison,
                 const std::vector<std::string>& floorArguments = {"/bin/true"}) {
    const ProcessResult first = runProcess(arguments, environment);
    if (!first.isSuccess || first.output.empty()) {
        state.SkipWithError("the program failed, or said nothing");
        return;
    }
    for (auto _ : state) {
        const ProcessResult floor = runProcess(floorArguments, environment);
        const ProcessResult run = runProcess(arguments, environment);
        comparison.add({run.seconds, run.cpuSeconds}, {floor.seconds, floor.cpuSeconds});
        state.SetIterationTime(run.seconds);
    }
}

void startVersion(::benchmark::State& state) {
    timeProgram(state, {QUORVANE_PROGRAM, "--version"}, {}, Comparison::ofTimes("quorvane --version", floorName, 0));
}
BENCHMARK(startVersion)->Iterations(21)->UseManualTime()->Unit(::benchmark::kMillisecond);

/// A home directory with the typical history.
class TypicalHome {
public:
    TypicalHome() {
        std::filesystem::create_directories(home_.path(".claude"));
        std::filesystem::create_directory_symlink(BenchmarkData::typicalHistory().projects,
                                                  home_.path(".claude/projects"));
    }

    /// The program with these arguments, as of the end of the history.
    [[nodiscard]] static std::vector<std::string> command(const std::vector<std::string>& arguments) {
        std::vector<std::string> whole{QUORVANE_PROGRAM, "--now", "2026-09-14T12:00:00Z"};
        whole.insert(whole.end(), arguments.begin(), arguments.end());
        return whole;
    }
    [[nodiscard]] std::vector<std::string> environment() const { return {"HOME=" + home_.path()}; }

private:
    ScratchFolder home_;
};

/// The first, untimed run brings the index up to date.
void startSummary(::benchmark::State& state) {
    const TypicalHome home;
    timeProgram(state, TypicalHome::command({"summary"}), home.environment(),
                Comparison::ofTimes("quorvane summary, 3000 files", floorName, 0));
}
BENCHMARK(startSummary)->Iterations(11)->UseManualTime()->Unit(::benchmark::kMillisecond);

void label(::benchmark::State& state, const std::vector<std::string>& arguments, const char* subject) {
    const TypicalHome home;
    timeProgram(state, TypicalHome::command(arguments), home.environment(),
                Comparison::ofTimes(subject, "quorvane refresh, unchanged", 1.5), TypicalHome::command({"refresh"}));
}
BENCHMARK_CAPTURE(label, plain, {"label"}, "quorvane label, 3000 files")
    ->Iterations(21)
    ->UseManualTime()
    ->Unit(::benchmark::kMillisecond);
BENCHMARK_CAPTURE(label, waybar, {"label", "--style", "waybar"}, "quorvane label for waybar, 3000 files")
    ->Iterations(21)
    ->UseManualTime()
    ->Unit(::benchmark::kMillisecond);

}  // namespace
}  // namespace quorvane::benchmarks
