#include "QuorvaneCore/providers/detail/CodexUsageSeries.h"

#include <algorithm>
#include <utility>

#include "QuorvaneCore/platform/CheckedArithmetic.h"

namespace quorvane {
namespace {

std::int64_t sumOf(const CodexTotals& totals) noexcept {
    return checkedAdd(checkedAdd(totals.input, totals.cached), totals.output);
}

bool isRestart(const CodexTotals& previous, const CodexTotals& totals) noexcept {
    return sumOf(previous) > checkedMultiply(2, sumOf(totals));
}

}  // namespace

void CodexUsageSeries::setProject(std::string_view project) {
    projects_.change(std::string{project});
}

void CodexUsageSeries::setModel(std::string_view model) {
    // Until now the only name was the empty one, of all the calls so far.
    if (knowsModel_) {
        models_.change(std::string{model});
    } else {
        models_.replaceFirst(std::string{model});
        knowsModel_ = true;
    }
}

void CodexUsageSeries::take(const CodexTotals& totals, Date date) {
    if (previous_ && isRestart(*previous_, totals)) emitted_ = {};
    previous_ = totals;

    Amounts standing{};
    standing[Input] = std::max<std::int64_t>(checkedSubtract(totals.input, totals.cached), 0);
    standing[Cached] = totals.cached;
    standing[Output] = totals.output;
    Amounts risen{};
    for (const Bucket bucket : {Input, Cached, Output}) {
        if (emitted_[bucket] > standing[bucket]) {
            takeBack(bucket, checkedSubtract(emitted_[bucket], standing[bucket]));
        } else {
            risen[bucket] = checkedSubtract(standing[bucket], emitted_[bucket]);
        }
    }
    emitted_ = standing;
    if (risen != Amounts{}) add(risen, date);
}

void CodexUsageSeries::takeBack(Bucket bucket, std::int64_t amount) {
    std::vector<std::uint32_t>& filled = filled_[bucket];
    while (amount > 0 && !filled.empty()) {
        std::int64_t& newest = calls_[filled.back()].amounts[bucket];
        const std::int64_t taken = std::min(amount, newest);
        newest -= taken;
        amount -= taken;
        if (newest == 0) filled.pop_back();
    }
}

void CodexUsageSeries::add(const Amounts& amounts, Date date) {
    const auto number = static_cast<std::uint32_t>(calls_.size());
    calls_.push_back({.date = date, .amounts = amounts, .model = models_.use(), .project = projects_.use()});
    for (const Bucket bucket : {Input, Cached, Output}) {
        if (amounts[bucket] > 0) filled_[bucket].push_back(number);
    }
}

std::vector<UsageEvent> CodexUsageSeries::events(const std::string& messageId) const {
    const auto stands = [](const Call& call) { return call.amounts != Amounts{}; };
    std::vector<UsageEvent> events;
    events.reserve(static_cast<std::size_t>(std::count_if(calls_.begin(), calls_.end(), stands)));
    for (std::size_t number = 0; number < calls_.size(); ++number) {
        const Call& call = calls_[number];
        if (!stands(call)) continue;
        events.push_back(
            {.messageId = messageId,
             .requestId = std::to_string(number),
             .provider = ProviderID::Codex,
             .model = models_.at(call.model),
             .timestamp = call.date,
             .usage = {.input = call.amounts[Input], .output = call.amounts[Output], .cacheRead = call.amounts[Cached]},
             .project = projects_.at(call.project)});
    }
    return events;
}

}  // namespace quorvane
