#include "QuorvaneCore/ratelimits/GrokRateLimitCapture.h"

namespace quorvane {
namespace {

/// What stands between the first and the last line of the script.
constexpr std::string_view scriptBody = R"sh(
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
)sh";

/// For a text between single quotes of a shell: a quote ends the text, stands there escaped, and begins it anew.
std::string shellQuoted(std::string_view text) {
    std::string quoted{"'"};
    for (const char character : text) {
        if (character == '\'') {
            quoted += R"('\'')";
        } else {
            quoted += character;
        }
    }
    return quoted += '\'';
}

std::string jsonEscaped(std::string_view text) {
    std::string escaped;
    for (const char character : text) {
        switch (character) {
            case '\\': escaped += R"(\\)"; break;
            case '"': escaped += R"(\")"; break;
            case '\n': escaped += R"(\n)"; break;
            case '\r': escaped += R"(\r)"; break;
            case '\t': escaped += R"(\t)"; break;
            default: escaped += character;
        }
    }
    return escaped;
}

/// The hook's lines for one event of the agent.
std::string hookOfEvent(std::string_view event, std::string_view command) {
    std::string lines{"    \""};
    lines.append(event).append(R"(": [
      {
        "hooks": [
          { "type": "command", "command": ")");
    lines.append(command).append(R"(", "timeout": 15 }
        ]
      }
    ])");
    return lines;
}

}  // namespace

std::string GrokRateLimitCapture::captureScript() {
    std::string script{beginMarker};
    script.append(" (added by Quorvane — safe to delete this file + ~/.grok/hooks/").append(hookFileName);
    return script.append(" to remove)").append(scriptBody).append(endMarker);
}

std::string GrokRateLimitCapture::hookJSON(std::string_view scriptPath) {
    const std::string command = jsonEscaped("bash " + shellQuoted(scriptPath));
    std::string lines{"{\n  \"hooks\": {\n"};
    lines.append(hookOfEvent("SessionStart", command)).append(",\n");
    lines.append(hookOfEvent("UserPromptSubmit", command)).append(",\n");
    return lines.append(hookOfEvent("Stop", command)).append("\n  }\n}");
}

}  // namespace quorvane
