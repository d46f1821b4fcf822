#pragma once
#include <cstddef>
#include <functional>
#include <string>

#include "QuorvaneCore/model/UsageEvent.h"

namespace quorvane {

/// What makes two records the same call within one reader's data. The provider is deliberately no part of it.
struct DedupKey {
    std::string messageId;
    std::string requestId;

    [[nodiscard]] static DedupKey of(const UsageEvent& event) { return {event.messageId, event.requestId}; }

    friend bool operator==(const DedupKey&, const DedupKey&) = default;
};

}  // namespace quorvane

template <>
struct std::hash<quorvane::DedupKey> {
    std::size_t operator()(const quorvane::DedupKey& key) const noexcept {
        const std::size_t first = std::hash<std::string>{}(key.messageId);
        return first * 31 + std::hash<std::string>{}(key.requestId);
    }
};
