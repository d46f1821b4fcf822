#include "QuorvaneCore/ratelimits/StatuslineCapture.h"

#include <algorithm>
#include <system_error>
#include <vector>

#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneCore/platform/FileContents.h"
#include "QuorvaneCore/platform/FilePath.h"
#include "QuorvaneCore/platform/JSONParser.h"
#include "QuorvaneCore/platform/UserFolders.h"
#include "QuorvaneCore/ratelimits/MarkedBlock.h"

namespace quorvane {
namespace {

constexpr MarkedBlock captureMarks{StatuslineCapture::beginMarker, StatuslineCapture::endMarker};
constexpr std::string_view blanks = " \t";

std::string revisionMarker() {
    return "# quorvane-capture-revision: " + std::to_string(StatuslineCapture::blockRevision);
}

std::vector<std::string_view> words(std::string_view command) {
    std::vector<std::string_view> found;
    for (;;) {
        const std::size_t begin = command.find_first_not_of(blanks);
        if (begin == std::string_view::npos) return found;
        command.remove_prefix(begin);
        const std::size_t end = std::min(command.find_first_of(blanks), command.size());
        found.push_back(command.substr(0, end));
        command.remove_prefix(end);
    }
}

bool isVariableName(std::string_view text) noexcept {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return c == '_' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    });
}

/// The variable that one line reads standard input into.
std::optional<std::string_view> capturedVariable(std::string_view line) noexcept {
    const std::size_t begin = line.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return std::nullopt;
    line.remove_prefix(begin);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || !line.substr(equals + 1).starts_with("$(cat)")) return std::nullopt;
    const std::string_view name = line.substr(0, equals);
    return isVariableName(name) ? std::optional{name} : std::nullopt;
}

/// The script that the present settings name.
std::optional<std::string> configuredScript() {
    const std::optional<std::string> settings =
        readFile(FilePath::joining(UserFolders::home(), ".claude/settings.json"));
    return settings ? StatuslineCapture::statuslineScriptPath(*settings) : std::nullopt;
}

std::optional<std::string> readableText(const std::string& path) {
    try {
        return readText(path);
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

}  // namespace

const char* StatuslineCapture::CaptureError::what() const noexcept {
    switch (kind_) {
        case Kind::NoStatusline: return "noStatusline";
        case Kind::NoStdinCapture: return "noStdinCapture";
    }
    return "";
}

StatuslineCapture::State StatuslineCapture::state() {
    std::optional<std::string> path = configuredScript();
    if (!path) return Unavailable{};
    const std::optional<std::string> script = readableText(*path);
    if (!script) return Unavailable{};
    if (isInstalled(*script)) return Active{};
    if (stdinVarName(*script)) return Installable{*std::move(path)};
    return Unavailable{};
}

void StatuslineCapture::install() {
    const std::optional<std::string> path = configuredScript();
    if (!path) throw CaptureError{CaptureError::Kind::NoStatusline};
    std::string script = readText(*path);
    if (isInstalled(script)) {
        if (!needsMigration(script)) return;
        script = removingBlock(script);
    }
    const std::optional<std::string> variable = stdinVarName(script);
    if (!variable) throw CaptureError{CaptureError::Kind::NoStdinCapture};
    replaceFile(*path, MarkedBlock::appended(script, captureBlock(*variable)));
}

void StatuslineCapture::uninstall() {
    const std::optional<std::string> path = configuredScript();
    if (!path) return;
    const std::string script = readText(*path);
    const std::string rest = removingBlock(script);
    if (rest != script) replaceFile(*path, rest);
}

void StatuslineCapture::migrateIfNeeded() noexcept {
    try {
        const std::optional<std::string> path = configuredScript();
        if (path && needsMigration(readText(*path))) install();
    } catch (const std::exception&) {
        // The older block goes on working; the next start tries again.
    }
}

std::optional<std::string> StatuslineCapture::statuslineScriptPath(std::string_view settingsJSON) {
    JSONParser parser;
    const std::optional<std::string_view> command = parser.parse(settingsJSON)["statusLine"]["command"].string();
    if (!command) return std::nullopt;
    const std::vector<std::string_view> pieces = words(*command);
    if (pieces.empty()) return std::nullopt;
    const auto script =
        std::find_if(pieces.rbegin(), pieces.rend(), [](std::string_view piece) { return piece.ends_with(".sh"); });
    return expandHome(script == pieces.rend() ? pieces.back() : *script);
}

bool StatuslineCapture::isInstalled(std::string_view script) noexcept {
    return captureMarks.isIn(script);
}

std::optional<std::string> StatuslineCapture::stdinVarName(std::string_view script) {
    while (!script.empty()) {
        const std::size_t end = std::min(script.find('\n'), script.size());
        if (const auto name = capturedVariable(script.substr(0, end))) return std::string{*name};
        script.remove_prefix(std::min(end + 1, script.size()));
    }
    return std::nullopt;
}

bool StatuslineCapture::needsMigration(std::string_view script) {
    return isInstalled(script) && script.find(revisionMarker()) == std::string_view::npos;
}

std::string StatuslineCapture::captureBlock(std::string_view varName) {
    const std::string echo = "echo \"$" + std::string{varName} + "\" | jq ";
    std::string block{beginMarker};
    block += " (added by Quorvane — safe to delete this block to remove)\n";
    block += revisionMarker();
    block += R"(
# Writes Claude's OFFICIAL rate_limits (5h + weekly, plus any per-model weekly windows) to a file
# the Quorvane app reads. `with_entries` forwards every `seven_day*` window Claude reports, so a
# per-model bar (e.g. Fable) appears automatically if and when Claude Code adds one to this feed.
if )" + echo +
             R"(-e '.rate_limits.five_hour.used_percentage != null' >/dev/null 2>&1; then
  __qvn_dir="$HOME/Library/Application Support/Quorvane"
  mkdir -p "$__qvn_dir" 2>/dev/null
  )" + echo +
             R"(-c '{capturedAt:(now|floor), five_hour:.rate_limits.five_hour})"
             R"( + (.rate_limits | with_entries(select(.key | startswith("seven_day"))))')"
             R"(     > "$__qvn_dir/claude-rate-limits.json.tmp" 2>/dev/null)"
             R"(     && mv -f "$__qvn_dir/claude-rate-limits.json.tmp" "$__qvn_dir/claude-rate-limits.json" 2>/dev/null
fi
)";
    return block.append(endMarker);
}

std::string StatuslineCapture::removingBlock(std::string_view script) {
    return captureMarks.removedFrom(script);
}

std::string StatuslineCapture::expandHome(std::string_view path) {
    if (path == "~") return UserFolders::home();
    if (path.starts_with("~/")) return UserFolders::home().append(path.substr(1));
    if (path.starts_with("$HOME/")) return UserFolders::home().append(path.substr(5));
    return std::string{path};
}

}  // namespace quorvane
