#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quorvane::benchmarks {

/// The least that a reader of line-delimited logs can do: read in chunks of 64 KiB, cut lines, parse those that matter.
/// It knows beforehand which ones these are, takes nothing out of them, and stores nothing.
class LogFloor {
public:
    enum class Agent : std::uint8_t { Claude, Codex, Copilot };

    /// Looks through `files` once, to learn which lines matter: those that carry usage, and with Codex also those that
    /// name a folder or a model. With Copilot it is all of them.
    explicit LogFloor(std::vector<std::string> files, Agent agent = Agent::Claude);
    LogFloor(const LogFloor&) = delete;
    LogFloor& operator=(const LogFloor&) = delete;
    ~LogFloor();

    /// Reads all files. Returns how many lines it parsed.
    std::int64_t run();

    [[nodiscard]] std::int64_t usageLines() const noexcept { return usageLines_; }

private:
    struct Parser;

    std::vector<std::string> files_;
    std::vector<bool> carriesUsage_;  ///< by line, over all files
    std::int64_t usageLines_ = 0;
    std::unique_ptr<Parser> parser_;
};

}  // namespace quorvane::benchmarks
