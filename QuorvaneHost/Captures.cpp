#include "QuorvaneHost/Captures.h"

#include "QuorvaneHost/captures/AgentCaptures.h"

namespace quorvane::host {

std::vector<std::unique_ptr<Capture>> allCaptures() {
    std::vector<std::unique_ptr<Capture>> captures;
    captures.push_back(makeClaudeCapture());
    captures.push_back(makeGrokCapture());
    captures.push_back(makeCopilotCapture());
    captures.push_back(makeCursorCapture());
    return captures;
}

}  // namespace quorvane::host
