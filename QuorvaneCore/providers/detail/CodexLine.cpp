#include "QuorvaneCore/providers/detail/CodexLine.h"

#include <cstddef>
#include <optional>

#include "QuorvaneCore/platform/JSONTopLevelScan.h"

namespace quorvane {
namespace {

/// For a line of type "event_msg", which `type` points at: whether its payload may be a token count. The payload mostly
/// follows the type; where it does not, only a parse can tell.
bool mayHaveTokenCount(std::string_view line, std::string_view type) noexcept {
    constexpr std::string_view payloadKey = R"(","payload":)";
    const auto typeBegin = static_cast<std::size_t>(type.data() - line.data());
    const std::string_view before = line.substr(0, typeBegin);
    const std::string_view behind = line.substr(typeBegin + type.size());
    if (!behind.starts_with(payloadKey)) return true;
    // Of two payloads the first one would count. It cannot hide behind an escape: with one in a key, the scan for the
    // type would have given up.
    if (before.find("payload") != std::string_view::npos) return true;
    // The scan is not told where the payload ends. A payload that has a type has it before anything behind the payload;
    // of a payload without one, the answer may be about what is behind, and then no is right and yes does no harm.
    const std::optional<std::string_view> event = scanTopLevelString(behind.substr(payloadKey.size()), "type");
    return !event || *event == "token_count";
}

}  // namespace

bool CodexLine::mayTellOfUsage(std::string_view line) noexcept {
    const std::optional<std::string_view> type = scanTopLevelString(line, "type");
    if (!type || *type == "session_meta" || *type == "turn_context") return true;
    return *type == "event_msg" && mayHaveTokenCount(line, *type);
}

bool CodexLine::mayCountTokens(std::string_view line) noexcept {
    const std::optional<std::string_view> type = scanTopLevelString(line, "type");
    if (!type) return true;
    return *type == "event_msg" && mayHaveTokenCount(line, *type);
}

}  // namespace quorvane
