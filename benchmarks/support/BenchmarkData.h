#pragma once
#include <cstdint>
#include <string>

#include "benchmarks/support/ClaudeHistory.h"

namespace quorvane::benchmarks {

/// Generated data on disk. It is made once and used again by later runs; a folder that was not finished is made anew.
class BenchmarkData {
public:
    BenchmarkData() = delete;

    /// A history on disk: `projects` is what the Claude reader takes as its root.
    struct History {
        std::string projects;
        ClaudeHistory::Totals totals;
    };

    /// The environment's QUORVANE_BENCHMARK_DATA, else a folder in the temporary directory. It is created.
    [[nodiscard]] static std::string folder();

    /// The environment's QUORVANE_BENCHMARK_SCALE, above 0 and at most 1; 1 without it. Sizes are multiplied by it.
    [[nodiscard]] static double scale();

    /// `count` shrunk by the scale, at least 1.
    [[nodiscard]] static std::int64_t scaled(std::int64_t count);

    /// The history of these parameters, generated if it is not there.
    [[nodiscard]] static History history(const ClaudeHistory::Parameters& parameters);

    /// One gigabyte in 3000 logs, shrunk by the scale.
    [[nodiscard]] static const History& typicalHistory();

    /// 10000 logs of a few kilobytes, shrunk by the scale.
    [[nodiscard]] static const History& manyFiles();

    /// One log of 600 MB with ten lines of 10 MB, shrunk by the scale.
    [[nodiscard]] static const History& largeFile();
};

/// A folder of a benchmark's own below the data folder, empty at first and removed at the end.
class ScratchFolder {
public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    [[nodiscard]] const std::string& path() const noexcept { return path_; }
    [[nodiscard]] std::string path(const std::string& name) const { return path_ + "/" + name; }

    /// Removes all that is in it.
    void clear() const;

private:
    std::string path_;
};

}  // namespace quorvane::benchmarks
