#include "QuorvaneCore/platform/Clock.h"

#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>

namespace quorvane {
namespace {

// NaN stands for "not pinned", so that one atomic value says it all.
std::atomic<double> pinned{std::numeric_limits<double>::quiet_NaN()};

}  // namespace

Date Clock::now() noexcept {
    const double moment = pinned.load(std::memory_order_relaxed);
    if (!std::isnan(moment)) return Date{moment};
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    const auto micros = std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count();
    return Date{static_cast<double>(micros) / 1e6};
}

void Clock::pin(Date moment) noexcept {
    pinned.store(moment.secondsSince1970, std::memory_order_relaxed);
}

void Clock::unpin() noexcept {
    pinned.store(std::numeric_limits<double>::quiet_NaN(), std::memory_order_relaxed);
}

}  // namespace quorvane
