#pragma once
#include "QuorvaneCore/model/TokenUsage.h"
#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane::detail {

/// Adds one call to a summary of the analytic kind.
template <typename Summary>
void addCall(Summary& summary, const TokenUsage& usage, double cost) noexcept {
    summary.eventCount = checkedAdd(summary.eventCount, 1);
    summary.inputTokens = checkedAdd(summary.inputTokens, usage.input);
    summary.outputTokens = checkedAdd(summary.outputTokens, usage.output);
    summary.cache5mTokens = checkedAdd(summary.cache5mTokens, usage.cacheCreate5m);
    summary.cache1hTokens = checkedAdd(summary.cache1hTokens, usage.cacheCreate1h);
    summary.cacheReadTokens = checkedAdd(summary.cacheReadTokens, usage.cacheRead);
    summary.cost += cost;
}

}  // namespace quorvane::detail
