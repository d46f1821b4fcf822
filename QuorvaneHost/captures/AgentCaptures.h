#pragma once
#include <memory>

#include "QuorvaneHost/Captures.h"

namespace quorvane::host {

/// One each agent: the library's set-up in the host's words.
[[nodiscard]] std::unique_ptr<Capture> makeClaudeCapture();
[[nodiscard]] std::unique_ptr<Capture> makeGrokCapture();
[[nodiscard]] std::unique_ptr<Capture> makeCopilotCapture();
[[nodiscard]] std::unique_ptr<Capture> makeCursorCapture();

}  // namespace quorvane::host
