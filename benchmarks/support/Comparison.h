#pragma once
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "QuorvaneCore/platform/FunctionView.h"

namespace quorvane::benchmarks {

/// How long something took.
struct Timing {
    double seconds = 0;     ///< by the clock on the wall
    double cpuSeconds = 0;  ///< of all threads of this process, in and out of the kernel

    [[nodiscard]] static Timing of(FunctionView<void()> work);
};

/// One line of the table that stands at the end of a run: a piece of work beside the least that could do the same, or
/// beside a limit. All lines of a run are kept until the program ends. One thread.
class Comparison {
public:
    /// A subject that is compared with a floor. `target` is the highest ratio that is good enough; 0 if there is none.
    [[nodiscard]] static Comparison& ofTimes(const std::string& subject, const std::string& floor, double target);

    /// A subject that is compared with a fixed amount of memory, in MiB.
    [[nodiscard]] static Comparison& ofMemory(const std::string& subject, double targetMebibytes);

    /// Times both, in turns which one comes first. Returns the seconds of `subject`.
    double measure(FunctionView<void()> subject, FunctionView<void()> floor);

    void add(const Timing& subject, const Timing& floor);
    void addMebibytes(double amount);

    /// The medians of what was measured; 0 for nothing.
    [[nodiscard]] double ratio() const;
    [[nodiscard]] double cpuRatio() const;

    /// Prints all lines of the run to standard error, so that the output of the benchmarks stays what it is.
    static void printAll();

private:
    Comparison(std::string subject, std::string floor, double target, bool isMemory)
        : subject_{std::move(subject)}, floor_{std::move(floor)}, target_{target}, isMemory_{isMemory} {}

    static Comparison& find(const Comparison& wanted);
    void print() const;
    void printTimes() const;
    void printMemory() const;
    [[nodiscard]] const char* verdict(double value) const;

    std::string subject_;
    std::string floor_;
    double target_ = 0;
    bool isMemory_ = false;
    std::vector<Timing> subjectTimings_;
    std::vector<Timing> floorTimings_;
    std::vector<double> mebibytes_;
};

}  // namespace quorvane::benchmarks
