#include "QuorvaneCore/providers/detail/CopilotBestEvents.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "QuorvaneCore/model/Deduplicator.h"
#include "QuorvaneCore/platform/TextHash.h"

namespace quorvane {
namespace {

/// The places of events, found by the hash of their key; half of them stay free.
class EventPlaces {
public:
    explicit EventPlaces(std::size_t most) : places_(std::bit_ceil(2 * most + 1)) {}

    /// Has the processor fetch what `find` will look at: in a large table that takes longer than all else here.
    void prepare(std::uint64_t hash) const noexcept { __builtin_prefetch(&places_[slot(hash)]); }

    /// The number of an event of that hash for which `isWanted` holds; 0 for a new one, whose number it writes there.
    template <typename IsWanted>
    std::uint32_t& find(std::uint64_t hash, IsWanted&& isWanted) {
        const auto tag = static_cast<std::uint32_t>(hash >> 32);
        std::size_t at = slot(hash);
        while (places_[at].number != 0 && (places_[at].tag != tag || !isWanted(places_[at].number)))
            at = (at + 1) & (places_.size() - 1);
        places_[at].tag = tag;
        return places_[at].number;
    }

private:
    struct Place {
        std::uint32_t tag = 0;     ///< of the hash what does not lead here
        std::uint32_t number = 0;  ///< from 1 on; 0 for a free place
    };

    [[nodiscard]] std::size_t slot(std::uint64_t hash) const noexcept {
        return static_cast<std::size_t>(hash) & (places_.size() - 1);
    }

    std::vector<Place> places_;
};

}  // namespace

void keepBestEvents(std::vector<UsageEvent>& events) {
    constexpr std::size_t ahead = 16;
    std::vector<std::uint64_t> hashes;
    hashes.reserve(events.size());
    for (const UsageEvent& event : events)
        hashes.push_back(textHash(event.requestId) + 3 * textHash(event.messageId));
    EventPlaces places{events.size()};
    std::size_t kept = 0;
    for (std::size_t at = 0; at < events.size(); ++at) {
        if (at + ahead < events.size()) places.prepare(hashes[at + ahead]);
        UsageEvent& event = events[at];
        std::uint32_t& number = places.find(hashes[at], [&](std::uint32_t known) {
            return events[known - 1].requestId == event.requestId && events[known - 1].messageId == event.messageId;
        });
        if (number == 0) {
            if (kept != at) events[kept] = std::move(event);
            number = static_cast<std::uint32_t>(++kept);
        } else if (Deduplicator::isBetter(event.usage, events[number - 1].usage)) {
            events[number - 1] = std::move(event);
        }
    }
    events.resize(kept);
}

}  // namespace quorvane
