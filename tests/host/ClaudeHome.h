#pragma once
#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "QuorvaneCore/platform/ISODate.h"
#include "tests/host/HostRun.h"

namespace quorvane::testing {

inline const std::string quorvaneFolder = "Library/Application Support/Quorvane";
inline const std::string indexFile = quorvaneFolder + "/usage.sqlite";
inline const std::string limitsFile = quorvaneFolder + "/claude-rate-limits.json";
inline const std::string claudeLog = ".claude/projects/-home-ana-shop/s.jsonl";

/// The present moment of these tests, 2026-03-01T09:30:00Z.
inline constexpr std::int64_t testNow = 1772357400;
inline constexpr std::int64_t minute = 60;
inline constexpr std::int64_t hour = 60 * minute;

/// Runs the program as if it were so many seconds after `testNow`.
inline ProgramRun runLater(std::int64_t seconds, std::vector<std::string> arguments, ProgramRun::Options options = {}) {
    const Date now{static_cast<double>(testNow + seconds)};
    arguments.insert(arguments.begin(), {"--now", ISODate::text(now)});
    return runHost(std::move(arguments), std::move(options));
}

inline ProgramRun runNow(std::vector<std::string> arguments, ProgramRun::Options options = {}) {
    return runLater(0, std::move(arguments), std::move(options));
}

/// One window of the limits, as Claude Code's status line has it; the reset is so many seconds after `testNow`.
inline std::string limitWindow(const std::string& usedPercent, std::int64_t resetsIn) {
    return R"({"used_percentage":)" + usedPercent + R"(,"resets_at":)" + std::to_string(testNow + resetsIn) + "}";
}

/// Limits that were captured so many seconds before `testNow`. `more` begins with a comma.
inline void writeLimits(const ScratchHome& home, std::int64_t age, const std::string& fiveHour,
                        const std::string& sevenDay, const std::string& more = "") {
    home.write(limitsFile, R"({"capturedAt":)" + std::to_string(testNow - age) + R"(,"five_hour":)" + fiveHour +
                               R"(,"seven_day":)" + sevenDay + more + "}\n");
}

/// Calls of today for $5.00 and of three older days, within 7, 14, 30 and 90 days, for $2.50, $1.00 and $0.20.
inline void writeCalls(const ScratchHome& home) {
    home.write(claudeLog, claudeCall("a", "claude-opus-4-8", "2026-03-01T08:00:00.000Z", 1000000, 0) +
                              claudeCall("b", "claude-opus-4-8", "2026-02-20T08:00:00.000Z", 0, 100000) +
                              claudeCall("c", "claude-sonnet-5", "2026-02-10T08:00:00.000Z", 500000, 0) +
                              claudeCall("d", "claude-sonnet-5", "2026-01-15T08:00:00.000Z", 0, 0, 1000000));
}

inline std::int64_t lineCount(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
}

}  // namespace quorvane::testing
