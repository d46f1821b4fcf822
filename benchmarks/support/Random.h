#pragma once
#include <cstdint>

namespace quorvane::benchmarks {

/// A small generator of its own (splitmix64): the same seed gives the same data with every standard library.
class Random {
public:
    explicit Random(std::uint64_t seed) noexcept : state_{seed} {}

    std::uint64_t next() noexcept {
        state_ += 0x9e3779b97f4a7c15ULL;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9ULL;
        mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebULL;
        return mixed ^ (mixed >> 31);
    }

    /// A number from 0 to `bound` - 1. `bound` is at least 1.
    std::int64_t below(std::int64_t bound) noexcept {
        return static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(bound));
    }

    /// A number from `least` to `most`, both possible.
    std::int64_t between(std::int64_t least, std::int64_t most) noexcept { return least + below(most - least + 1); }

    /// From 0 up to, but not reaching, 1.
    double unit() noexcept { return static_cast<double>(next() >> 11) * 0x1.0p-53; }

    bool chance(double probability) noexcept { return unit() < probability; }

private:
    std::uint64_t state_;
};

}  // namespace quorvane::benchmarks
