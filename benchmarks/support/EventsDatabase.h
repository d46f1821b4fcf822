#pragma once
#include <cstdint>
#include <span>
#include <string>

#include "QuorvaneCore/model/ProviderID.h"
#include "QuorvaneCore/platform/Date.h"

namespace quorvane::benchmarks {

/// An index of many calls: six models of three providers, over a hundred days, a few of them beyond the long-context
/// threshold, most of them by day. Made once and kept in the data folder.
class EventsDatabase {
public:
    EventsDatabase() = delete;

    /// The path of an index with `count` events.
    [[nodiscard]] static std::string path(std::int64_t count);

    /// No event is later.
    [[nodiscard]] static Date end() noexcept { return Date{1789387200}; }  // 2026-09-14T12:00:00Z
    static constexpr std::int64_t days = 100;

    [[nodiscard]] static std::span<const ProviderID> providers() noexcept;
};

}  // namespace quorvane::benchmarks
