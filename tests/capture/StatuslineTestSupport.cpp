#include "tests/capture/StatuslineTestSupport.h"

#include <cstdlib>

namespace quorvane::testing {

void StatuslineHome::moveHomeTo(std::string_view folder) {
    makeFolder(folder);
    ::setenv("HOME", path(folder).c_str(), 1);
}

std::string StatuslineHome::home() const {
    return std::getenv("HOME");
}

std::string StatuslineHome::inHome(std::string_view relative) const {
    return home().append("/").append(relative);
}

void StatuslineHome::nameCommand(std::string_view command) const {
    const std::string text{command};
    write(inHome(".claude/settings.json"), R"({"statusLine": {"type": "command", "command": ")" + text + R"("}})");
}

std::string StatuslineHome::useScript(std::string_view text) const {
    nameCommand("bash ~/.claude/statusline.sh --compact");
    return write(inHome(scriptFile), text);
}

const std::string_view expectedBlock =
    R"(# BEGIN QUORVANE-RATE-LIMIT-CAPTURE (added by Quorvane — safe to delete this block to remove)
# quorvane-capture-revision: 2
# Writes Claude's OFFICIAL rate_limits (5h + weekly, plus any per-model weekly windows) to a file
# the Quorvane app reads. `with_entries` forwards every `seven_day*` window Claude reports, so a
# per-model bar (e.g. Fable) appears automatically if and when Claude Code adds one to this feed.
if echo "$input" | jq -e '.rate_limits.five_hour.used_percentage != null' >/dev/null 2>&1; then
  __qvn_dir="$HOME/Library/Application Support/Quorvane"
  mkdir -p "$__qvn_dir" 2>/dev/null
  echo "$input" | jq -c '{capturedAt:(now|floor), five_hour:.rate_limits.five_hour} + (.rate_limits | with_entries(select(.key | startswith("seven_day"))))'     > "$__qvn_dir/claude-rate-limits.json.tmp" 2>/dev/null     && mv -f "$__qvn_dir/claude-rate-limits.json.tmp" "$__qvn_dir/claude-rate-limits.json" 2>/dev/null
fi
# END QUORVANE-RATE-LIMIT-CAPTURE)";

const std::string_view oldestBlock = R"(# BEGIN QUORVANE-RATE-LIMIT-CAPTURE (added by Quorvane)
echo "$input" > /dev/null
# END QUORVANE-RATE-LIMIT-CAPTURE)";

const std::string_view olderBlock = R"(# BEGIN QUORVANE-RATE-LIMIT-CAPTURE (added by Quorvane)
# quorvane-capture-revision: 1
echo "$input" > /dev/null
# END QUORVANE-RATE-LIMIT-CAPTURE)";

}  // namespace quorvane::testing
