#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/providers/CodexProvider.h"
#include "QuorvaneCore/providers/CodexRateLimitRecord.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {

/// The moment at which these tests take place.
constexpr double testNow = 1789387200;  // 2026-09-14T12:00:00Z
constexpr double minute = 60;
constexpr double hour = 3600;
constexpr double day = 86400;

/// An ISO 8601 time with milliseconds.
[[nodiscard]] std::string isoTime(double secondsSince1970);

// Lines of a rollout, each with its line feed.

struct Totals {
    std::int64_t input = 0;
    std::int64_t cached = 0;
    std::int64_t output = 0;
};

/// `payload` is JSON.
[[nodiscard]] std::string line(std::string_view type, std::string_view payload, double when = testNow - hour);
[[nodiscard]] std::string tokenCount(const Totals& totals, double when = testNow - hour);
/// A token count without totals; `rateLimits` is JSON.
[[nodiscard]] std::string limitsLine(std::string_view rateLimits, double when = testNow - hour);

// What a report holds, as JSON.

[[nodiscard]] std::string windowJSON(double usedPercent, std::int64_t minutes, double resetsAt);
/// A report of one weekly window, under the name of the short one, as the agent writes it.
[[nodiscard]] std::string weeklyReport(double usedPercent, double resetsAt);

/// Each event as "number input/cached/output", and with its model and project if `details` is set.
[[nodiscard]] std::vector<std::string> told(const std::vector<UsageEvent>& events, bool details = false);

/// A home with rollouts. Files are named relative to the folder of rollouts.
struct RolloutHome {
    std::string write(std::string_view file, std::string_view content) const;
    std::string append(std::string_view file, std::string_view content) const;
    /// Sets the time of the last change to so many seconds before the tests' moment.
    void setAge(std::string_view file, double seconds) const;
    [[nodiscard]] std::string path(std::string_view file) const;

    /// The events of a rollout with this content.
    [[nodiscard]] std::vector<UsageEvent> parse(std::string_view content, std::int64_t chunkSize = 65536) const;

    ScratchHome home;
    CodexProvider provider;
};

/// Counts how often files are opened.
class OpenCount {
public:
    explicit OpenCount(const std::vector<std::string>& files);
    OpenCount(const OpenCount&) = delete;
    OpenCount& operator=(const OpenCount&) = delete;
    ~OpenCount();

    /// Since it began or since it was last asked: all opens of all files.
    [[nodiscard]] int take() const;

private:
    int descriptor_;
};

}  // namespace quorvane::testing

namespace quorvane {

/// For messages of failed expectations.
void PrintTo(const RateLimitWindow& window, std::ostream* stream);
void PrintTo(const RateLimitSnapshot& snapshot, std::ostream* stream);
void PrintTo(const CodexRateLimitRecord& record, std::ostream* stream);

}  // namespace quorvane
