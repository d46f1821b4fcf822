#pragma once
#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QuorvaneCore/model/UsageEvent.h"

namespace quorvane::testing {

/// The rules of running totals, written down one after the other on a plain list of events, without regard to speed:
/// what the reader must agree with. Where the reader would end the process for a sum beyond 64 bits, `fits` becomes
/// false and nothing counts any more.
class LiteralTokenCounts {
public:
    std::string messageId;
    std::vector<UsageEvent> events;
    std::optional<std::string> project;
    std::optional<std::string> model;
    bool fits = true;

    void recordModel(const std::string& name) {
        model = name;
        if (!isModelPending_) return;
        for (UsageEvent& event : events) {
            if (event.model.empty()) event.model = name;
        }
        isModelPending_ = false;
    }

    void count(std::int64_t input, std::int64_t cached, std::int64_t output, Date timestamp) {
        if (previous_) {
            const std::int64_t before = plus(plus(previous_->input, previous_->cacheRead), previous_->output);
            const std::int64_t now = plus(plus(input, cached), output);
            if (before > plus(now, now)) emitted_ = {};
        }
        previous_ = TokenUsage{.input = input, .output = output, .cacheRead = cached};
        const std::int64_t uncached = std::max<std::int64_t>(minus(input, cached), 0);
        settle(&TokenUsage::input, uncached);
        settle(&TokenUsage::cacheRead, cached);
        settle(&TokenUsage::output, output);
        const TokenUsage delta{.input = minus(uncached, emitted_.input),
                               .output = minus(output, emitted_.output),
                               .cacheRead = minus(cached, emitted_.cacheRead)};
        if (!fits || delta == TokenUsage{}) return;
        events.push_back({.messageId = messageId,
                          .requestId = std::to_string(sequence_),
                          .provider = ProviderID::Codex,
                          .model = model.value_or(""),
                          .timestamp = timestamp,
                          .usage = delta,
                          .project = project});
        if (!model) isModelPending_ = true;
        ++sequence_;
        emitted_.input = plus(emitted_.input, delta.input);
        emitted_.cacheRead = plus(emitted_.cacheRead, delta.cacheRead);
        emitted_.output = plus(emitted_.output, delta.output);
    }

private:
    using Bucket = std::int64_t TokenUsage::*;

    void settle(Bucket bucket, std::int64_t standing) {
        if (emitted_.*bucket <= standing) return;
        reduceEmitted(bucket, minus(emitted_.*bucket, standing));
        emitted_.*bucket = standing;
    }

    void reduceEmitted(Bucket bucket, std::int64_t amount) {
        for (std::size_t index = events.size(); index-- > 0 && amount > 0;) {
            TokenUsage& usage = events[index].usage;
            if (usage.*bucket < 1) continue;
            const std::int64_t taken = std::min(amount, usage.*bucket);
            usage.*bucket -= taken;
            amount -= taken;
            if (usage == TokenUsage{}) events.erase(events.begin() + static_cast<std::ptrdiff_t>(index));
        }
    }

    std::int64_t plus(std::int64_t left, std::int64_t right) {
        std::int64_t sum = 0;
        if (__builtin_add_overflow(left, right, &sum)) fits = false;
        return sum;
    }
    std::int64_t minus(std::int64_t left, std::int64_t right) {
        std::int64_t difference = 0;
        if (__builtin_sub_overflow(left, right, &difference)) fits = false;
        return difference;
    }

    std::optional<TokenUsage> previous_;
    TokenUsage emitted_;
    std::int64_t sequence_ = 0;
    bool isModelPending_ = false;
};

}  // namespace quorvane::testing
