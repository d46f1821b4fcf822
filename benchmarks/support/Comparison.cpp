#include "benchmarks/support/Comparison.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <list>

namespace quorvane::benchmarks {
namespace {

double now(clockid_t clock) {
    timespec time{};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double medianOf(const std::vector<Timing>& timings, double Timing::*part) {
    std::vector<double> values;
    for (const Timing& timing : timings)
        values.push_back(timing.*part);
    return median(std::move(values));
}

double quotient(double value, double divisor) {
    return divisor > 0 ? value / divisor : 0;
}

/// A list, since lines are referred to while others are added.
std::list<Comparison>& lines() {
    static std::list<Comparison> all;
    return all;
}

}  // namespace

Timing Timing::of(FunctionView<void()> work) {
    const double cpuBegin = now(CLOCK_PROCESS_CPUTIME_ID);
    const double begin = now(CLOCK_MONOTONIC);
    work();
    const double end = now(CLOCK_MONOTONIC);
    return {.seconds = end - begin, .cpuSeconds = now(CLOCK_PROCESS_CPUTIME_ID) - cpuBegin};
}

Comparison& Comparison::find(const Comparison& wanted) {
    std::list<Comparison>& all = lines();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Comparison& line) { return line.subject_ == wanted.subject_; });
    return found != all.end() ? *found : all.emplace_back(wanted);
}

Comparison& Comparison::ofTimes(const std::string& subject, const std::string& floor, double target) {
    return find(Comparison{subject, floor, target, false});
}

Comparison& Comparison::ofMemory(const std::string& subject, double targetMebibytes) {
    return find(Comparison{subject, "limit", targetMebibytes, true});
}

double Comparison::measure(FunctionView<void()> subject, FunctionView<void()> floor) {
    Timing subjectTiming;
    Timing floorTiming;
    const bool floorFirst = subjectTimings_.size() % 2 == 0;
    if (floorFirst) floorTiming = Timing::of(floor);
    subjectTiming = Timing::of(subject);
    if (!floorFirst) floorTiming = Timing::of(floor);
    add(subjectTiming, floorTiming);
    return subjectTiming.seconds;
}

void Comparison::add(const Timing& subject, const Timing& floor) {
    subjectTimings_.push_back(subject);
    floorTimings_.push_back(floor);
}

void Comparison::addMebibytes(double amount) {
    mebibytes_.push_back(amount);
}

double Comparison::ratio() const {
    return quotient(medianOf(subjectTimings_, &Timing::seconds), medianOf(floorTimings_, &Timing::seconds));
}

double Comparison::cpuRatio() const {
    return quotient(medianOf(subjectTimings_, &Timing::cpuSeconds), medianOf(floorTimings_, &Timing::cpuSeconds));
}

const char* Comparison::verdict(double value) const {
    if (target_ <= 0) return "";
    return value <= target_ ? "met" : "MISSED";
}

void Comparison::printTimes() const {
    char target[32] = "-";
    if (target_ > 0) std::snprintf(target, sizeof target, "%.2f", target_);
    std::fprintf(stderr, "%-34s %10.2f ms %10.2f ms %7.2f %7.2f %8s %3zu  %-6s  %s\n", subject_.c_str(),
                 medianOf(subjectTimings_, &Timing::seconds) * 1e3, medianOf(floorTimings_, &Timing::seconds) * 1e3,
                 ratio(), cpuRatio(), target, subjectTimings_.size(), verdict(ratio()), floor_.c_str());
}

void Comparison::printMemory() const {
    const double most = *std::max_element(mebibytes_.begin(), mebibytes_.end());
    std::fprintf(stderr, "%-34s %9.1f MiB %9.1f MiB %7.2f %7s %8s %3zu  %-6s  %s\n", subject_.c_str(), most, target_,
                 most / target_, "-", "1.00", mebibytes_.size(), verdict(most), floor_.c_str());
}

void Comparison::print() const {
    if (isMemory_ && !mebibytes_.empty()) printMemory();
    if (!isMemory_ && !subjectTimings_.empty()) printTimes();
}

void Comparison::printAll() {
    if (lines().empty()) return;
    std::fprintf(stderr, "\nmedians (of memory the most)\n%-34s %13s %13s %7s %7s %8s %3s  %-6s  %s\n", "subject",
                 "took", "floor", "ratio", "cpu", "target", "n", "", "floor is");
    for (const Comparison& line : lines())
        line.print();
}

}  // namespace quorvane::benchmarks
