// What the capture puts on the user's disk.

#include <algorithm>
#include <ostream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"
#include "tests/grok/GrokTestSupport.h"

namespace quorvane::testing {
namespace {

using ::testing::ElementsAre;

/// The script as users have it.
const std::string expectedScript =
    R"sh(# BEGIN QUORVANE-GROK-RATE-LIMIT-CAPTURE (added by Quorvane — safe to delete this file + ~/.grok/hooks/quorvane-rate-limit-capture.json to remove)
# Scrapes Grok Build's local billing log line into grok-rate-limits.json for Quorvane.
# No network, no auth.json, no prompts — only numbers Grok already wrote to unified.jsonl.
set -euo pipefail
LOG="${GROK_HOME:-$HOME/.grok}/logs/unified.jsonl"
OUTDIR="$HOME/Library/Application Support/Quorvane"
OUT="$OUTDIR/grok-rate-limits.json"
mkdir -p "$OUTDIR" 2>/dev/null || exit 0
[ -f "$LOG" ] || exit 0
/usr/bin/python3 - "$LOG" "$OUT" <<'PY'
import json, sys, os, tempfile
from datetime import datetime, timezone

log_path, out_path = sys.argv[1], sys.argv[2]
msg_want = "billing: fetched credits config"

def parse_iso(s):
    if not s:
        return None
    s = s.replace("Z", "+00:00")
    try:
        return datetime.fromisoformat(s)
    except Exception:
        return None

payload = None
try:
    with open(log_path, "r", encoding="utf-8", errors="replace") as f:
        lines = f.readlines()
except OSError:
    sys.exit(0)

for line in reversed(lines):
    line = line.strip()
    if msg_want not in line:
        continue
    try:
        root = json.loads(line)
    except Exception:
        continue
    if root.get("msg") != msg_want:
        continue
    ctx = root.get("ctx") or {}
    config = ctx.get("config") or {}
    used = config.get("creditUsagePercent")
    if used is None:
        continue
    try:
        used = float(used)
    except (TypeError, ValueError):
        continue
    period = config.get("currentPeriod") or {}
    end = parse_iso(period.get("end"))
    ts = parse_iso(root.get("ts")) or datetime.now(timezone.utc)
    weekly = {"used_percentage": max(0.0, min(100.0, used))}
    if end is not None:
        weekly["resets_at"] = end.timestamp()
    plan = ctx.get("subscriptionTier") or config.get("subscriptionTier")
    out = {
        "capturedAt": ts.timestamp(),
        "weekly": weekly,
        "source": "unified.jsonl",
    }
    if plan:
        out["plan_type"] = plan
    if period.get("type"):
        out["period_type"] = period["type"]
    payload = out
    break

if not payload:
    sys.exit(0)

dir_name = os.path.dirname(out_path)
fd, tmp = tempfile.mkstemp(prefix="grok-rate-", dir=dir_name)
try:
    with os.fdopen(fd, "w", encoding="utf-8") as w:
        json.dump(payload, w, separators=(",", ":"))
    os.replace(tmp, out_path)
except Exception:
    try:
        os.unlink(tmp)
    except OSError:
        pass
    sys.exit(0)
PY
# END QUORVANE-GROK-RATE-LIMIT-CAPTURE)sh";

/// The hook's file of a user whose home is "/home/ana".
const std::string expectedHook = R"json({
  "hooks": {
    "SessionStart": [
      {
        "hooks": [
          { "type": "command", "command": "bash '/home/ana/Library/Application Support/Quorvane/grok-rate-limit-capture.sh'", "timeout": 15 }
        ]
      }
    ],
    "UserPromptSubmit": [
      {
        "hooks": [
          { "type": "command", "command": "bash '/home/ana/Library/Application Support/Quorvane/grok-rate-limit-capture.sh'", "timeout": 15 }
        ]
      }
    ],
    "Stop": [
      {
        "hooks": [
          { "type": "command", "command": "bash '/home/ana/Library/Application Support/Quorvane/grok-rate-limit-capture.sh'", "timeout": 15 }
        ]
      }
    ]
  }
})json";

TEST(GrokCaptureTexts, scriptIsTheLinesThatUsersHave) {
    EXPECT_EQ(GrokRateLimitCapture::captureScript(), expectedScript);
    EXPECT_EQ(std::count(expectedScript.begin(), expectedScript.end(), '\n') + 1, 87);
}

TEST(GrokCaptureTexts, scriptStandsBetweenItsMarkers) {
    const std::string script = GrokRateLimitCapture::captureScript();
    EXPECT_TRUE(script.starts_with("# BEGIN QUORVANE-GROK-RATE-LIMIT-CAPTURE "));
    EXPECT_TRUE(script.ends_with("\n# END QUORVANE-GROK-RATE-LIMIT-CAPTURE"));
    EXPECT_EQ(GrokRateLimitCapture::beginMarker, "# BEGIN QUORVANE-GROK-RATE-LIMIT-CAPTURE");
    EXPECT_EQ(GrokRateLimitCapture::endMarker, "# END QUORVANE-GROK-RATE-LIMIT-CAPTURE");
    EXPECT_TRUE(GrokRateLimitCapture::isInstalledInScript(script));
    EXPECT_FALSE(GrokRateLimitCapture::isInstalledInScript(GrokRateLimitCapture::endMarker));
    EXPECT_FALSE(GrokRateLimitCapture::isInstalledInScript(""));
}

TEST(GrokCaptureTexts, hookIsTheLinesThatUsersHave) {
    EXPECT_EQ(
        GrokRateLimitCapture::hookJSON("/home/ana/Library/Application Support/Quorvane/grok-rate-limit-capture.sh"),
        expectedHook);
}

struct CommandCase {
    const char* name;
    const char* path;
    const char* written;  ///< the command as it stands in the file
    const char* command;  ///< what a reader of the file takes it for
};
void PrintTo(const CommandCase& row, std::ostream* stream) {
    *stream << row.name;
}
class GrokHookCommand : public ::testing::TestWithParam<CommandCase> {};

TEST_P(GrokHookCommand, isQuotedForTheShellAndThenForJSON) {
    const std::string hook = GrokRateLimitCapture::hookJSON(GetParam().path);
    const std::string line =
        R"({ "type": "command", "command": ")" + std::string{GetParam().written} + R"(", "timeout": 15 })";
    EXPECT_NE(hook.find(line), std::string::npos) << hook;
    const std::string command = GetParam().command;
    EXPECT_THAT(hookCommands(hook),
                ElementsAre(HookCommand{"SessionStart", command, 15}, HookCommand{"UserPromptSubmit", command, 15},
                            HookCommand{"Stop", command, 15}));
}

/// The shell gets the path back, whatever it is made of.
TEST_P(GrokHookCommand, isTheScriptsPathToTheShell) {
    const std::vector<HookCommand> commands = hookCommands(GrokRateLimitCapture::hookJSON(GetParam().path));
    ASSERT_FALSE(commands.empty());
    ASSERT_TRUE(commands.front().command.starts_with("bash "));
    EXPECT_EQ(runCommand("printf %s " + commands.front().command.substr(5)).output, GetParam().path);
}

INSTANTIATE_TEST_SUITE_P(
    ByPath, GrokHookCommand,
    ::testing::Values(CommandCase{"plain", "/a/b.sh", "bash '/a/b.sh'", "bash '/a/b.sh'"},
                      CommandCase{"blanks", "/a b/c  d.sh", "bash '/a b/c  d.sh'", "bash '/a b/c  d.sh'"},
                      CommandCase{"singleQuote", "/it's/b.sh", R"(bash '/it'\\''s/b.sh')", R"(bash '/it'\''s/b.sh')"},
                      CommandCase{"singleQuotesOnly", "''", R"(bash ''\\'''\\''')", R"(bash ''\'''\''')"},
                      CommandCase{"doubleQuotes", R"(/"a"/b)", R"(bash '/\"a\"/b')", R"(bash '/"a"/b')"},
                      CommandCase{"backslashes", R"(/a\b\\n)", R"(bash '/a\\b\\\\n')", R"(bash '/a\b\\n')"},
                      CommandCase{"lineEndsAndTabs", "/a\nb\rc\td", R"(bash '/a\nb\rc\td')", "bash '/a\nb\rc\td'"},
                      CommandCase{"dollarsAndBackquotes", "/$HOME/`id`/!x", "bash '/$HOME/`id`/!x'",
                                  "bash '/$HOME/`id`/!x'"},
                      CommandCase{"lettersBeyondASCII", "/käse/日本", "bash '/käse/日本'", "bash '/käse/日本'"},
                      CommandCase{"empty", "", "bash ''", "bash ''"}),
    [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace quorvane::testing
