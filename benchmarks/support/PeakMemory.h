#pragma once
#include <cstdint>
#include <fstream>
#include <string>

namespace quorvane::benchmarks {

/// The most memory that this process had in use at once (VmHWM), in KiB; 0 if the system does not tell.
[[nodiscard]] inline std::int64_t peakMemoryKibibytes() {
    std::ifstream status{"/proc/self/status"};
    for (std::string word; status >> word;) {
        std::int64_t amount = 0;
        if (word == "VmHWM:" && status >> amount) return amount;
    }
    return 0;
}

}  // namespace quorvane::benchmarks
