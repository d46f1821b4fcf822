#pragma once
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "QuorvaneCore/model/UsageEvent.h"

namespace quorvane::detail {

/// The key=value fields of one line of OpenCode's log.
using OpenCodeLogFields = std::map<std::string, std::string, std::less<>>;

/// `OpenCodeProvider::parseFields`. Pure; any thread.
[[nodiscard]] OpenCodeLogFields parseOpenCodeLogFields(std::string_view line);

/// Whether a line can tell of a call at all: false means that no field of it is a token figure.
[[nodiscard]] bool mayTellOfTokens(std::string_view line) noexcept;

/// The model as the fields name it, unchanged; empty if they do not.
[[nodiscard]] std::string_view openCodeLogModel(const OpenCodeLogFields& fields) noexcept;

/// The call that the fields tell of, its `provider` and `model` aside; absent without a session and without tokens.
/// A figure that 64 bits cannot hold ends the process.
[[nodiscard]] std::optional<UsageEvent> openCodeLogCall(const OpenCodeLogFields& fields);

}  // namespace quorvane::detail
