#include "QuorvaneCore/providers/detail/CopilotCover.h"

#include <algorithm>

namespace quorvane {
namespace {

/// By number of an id, the kinds that have it.
class Marks {
public:
    explicit Marks(std::size_t size) : kinds_(size) {}

    void add(std::uint32_t id, const CopilotClaim& claim) noexcept {
        kinds_[id] = static_cast<std::uint8_t>(kinds_[id] | kindBit(claim.kind));
    }

    /// Whether a more reliable kind has the id.
    [[nodiscard]] bool areAhead(std::uint32_t id, const CopilotClaim& claim) const noexcept {
        return covers(kinds_[id], claim.kind);
    }

private:
    std::vector<std::uint8_t> kinds_;
};

Marks marksOfTraces(std::span<const CopilotClaim> claims) {
    std::size_t traces = 0;
    for (const CopilotClaim& claim : claims) {
        if (claim.trace != TextTable::none) traces = std::max<std::size_t>(traces, claim.trace + std::size_t{1});
    }
    Marks marks{traces};
    for (const CopilotClaim& claim : claims) {
        if (claim.trace != TextTable::none) marks.add(claim.trace, claim);
    }
    return marks;
}

/// Completes what the traces told, of claims none of which they cover. Mostly there are none whose response matters.
void coverByResponses(std::span<const CopilotClaim> claims, std::vector<bool>& covered) {
    const auto isOpen = [&](std::size_t at) {
        const bool canBeCovered = claims[at].kind != CopilotOTelParser::RecordKind::ChatSpan;
        return canBeCovered && !claims[at].response.empty() && !covered[at];
    };
    TextTable wanted;
    for (std::size_t at = 0; at < claims.size(); ++at) {
        if (isOpen(at)) wanted.add(claims[at].response);
    }
    if (wanted.size() == 0) return;
    Marks marks{wanted.size()};
    for (const CopilotClaim& claim : claims) {
        if (claim.response.empty()) continue;
        const std::uint32_t id = wanted.find(claim.response);
        if (id != TextTable::none) marks.add(id, claim);
    }
    for (std::size_t at = 0; at < claims.size(); ++at) {
        if (isOpen(at)) covered[at] = marks.areAhead(wanted.find(claims[at].response), claims[at]);
    }
}

}  // namespace

std::vector<bool> coveredClaims(std::span<const CopilotClaim> claims) {
    const Marks marks = marksOfTraces(claims);
    std::vector<bool> covered(claims.size());
    for (std::size_t at = 0; at < claims.size(); ++at)
        covered[at] = claims[at].trace != TextTable::none && marks.areAhead(claims[at].trace, claims[at]);
    coverByResponses(claims, covered);
    return covered;
}

}  // namespace quorvane
