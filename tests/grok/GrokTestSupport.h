#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuorvaneCore/model/UsageEvent.h"
#include "QuorvaneCore/platform/Date.h"
#include "QuorvaneCore/platform/JSONTree.h"
#include "QuorvaneCore/ratelimits/RateLimit.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScopedVariables.h"
#include "tests/support/ScratchHome.h"

namespace quorvane::testing {

/// The moment at which these tests take place.
constexpr Date testNow{1789387200};  // 2026-09-14T12:00:00Z
constexpr double hour = 3600;

/// A home directory without the agent's environment.
class GrokScratchHome : public ScratchHome {
public:
    static constexpr std::string_view captureFile = "Library/Application Support/Quorvane/grok-rate-limits.json";
    static constexpr std::string_view scriptFile = "Library/Application Support/Quorvane/grok-rate-limit-capture.sh";
    static constexpr std::string_view hookFile = ".grok/hooks/quorvane-rate-limit-capture.json";
    static constexpr std::string_view logFile = ".grok/logs/unified.jsonl";

    GrokScratchHome() = default;

    /// From here on the home directory is a new folder of that name below the first one.
    void moveHomeTo(std::string_view folder) const;
    /// The home directory that counts now, or a path in it.
    [[nodiscard]] std::string home() const;
    [[nodiscard]] std::string inHome(std::string_view relative) const;

    /// From here on the agent's home is the one that the environment names.
    void setGrokHome(const std::string& path) const { variables_.set("GROK_HOME", path); }

    /// Puts an executable file at `path`.
    void makeProgram(std::string_view path) const;
    /// Makes the agent's home in the home directory, with its program.
    void makeAgent() const { makeProgram(inHome(".grok/bin/grok")); }

private:
    ScopedVariables variables_{"GROK_HOME"};
};

// Session logs

/// A line of a completed turn; `usage` is JSON. No line feed.
[[nodiscard]] std::string turnLine(std::string_view turn, std::string_view usage, double when = 1789374066.48);
/// The counters of one model, as JSON.
[[nodiscard]] std::string grokUsage(std::int64_t input, std::int64_t output, std::int64_t cached = 0,
                                    std::int64_t reasoning = 0);

/// All of each event in one text; of several, in the order of those texts.
[[nodiscard]] std::string told(const UsageEvent& event);
[[nodiscard]] std::vector<std::string> told(const std::vector<UsageEvent>& events);

// The billing log

/// A line that tells of the credits, as the agent writes it; the period ends so many seconds behind `testNow`. No line
/// feed.
[[nodiscard]] std::string billingLine(double percent, double secondsAgo = 60, double periodEnd = 5 * 24 * hour);
/// A line with that message and context, which is JSON. No line feed.
[[nodiscard]] std::string logLine(std::string_view context,
                                  std::string_view message = "billing: fetched credits config");

/// An ISO 8601 time with milliseconds.
[[nodiscard]] std::string isoTime(Date date);

/// A record on one line, its numbers in one form, whichever program wrote them; "none" for none.
[[nodiscard]] std::string told(const std::optional<JSONTree::Object>& record);
/// The same for a file's content; empty for what is no JSON.
[[nodiscard]] std::string toldJSON(std::string_view json);

/// The commands of the hook's file, one for each event of the agent, as "EVENT timeout COMMAND".
struct HookCommand {
    std::string event;
    std::string command;
    std::int64_t timeout = 0;
    friend bool operator==(const HookCommand&, const HookCommand&) = default;
};
[[nodiscard]] std::vector<HookCommand> hookCommands(std::string_view hookJSON);

/// Runs a command as the agent does, with a shell.
[[nodiscard]] ProgramRun runCommand(const std::string& command);

}  // namespace quorvane::testing

namespace quorvane {

/// For messages of failed expectations.
void PrintTo(const RateLimitSnapshot& snapshot, std::ostream* stream);

}  // namespace quorvane
