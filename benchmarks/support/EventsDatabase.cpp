#include "benchmarks/support/EventsDatabase.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "QuorvaneCore/index/UsageIndex.h"
#include "QuorvaneCore/model/UsageEvent.h"
#include "benchmarks/support/BenchmarkData.h"
#include "benchmarks/support/Random.h"

namespace quorvane::benchmarks {
namespace {

constexpr std::array<ProviderID, 3> allProviders{ProviderID::Claude, ProviderID::Codex, ProviderID::Gemini};

struct Model {
    ProviderID provider;
    std::string_view name;
};

constexpr std::array<Model, 6> models{{{ProviderID::Claude, "claude-opus-4-8"},
                                       {ProviderID::Claude, "claude-sonnet-4-6"},
                                       {ProviderID::Claude, "claude-haiku-4-5"},
                                       {ProviderID::Codex, "gpt-5.6-sol"},
                                       {ProviderID::Codex, "gpt-5-mini"},
                                       {ProviderID::Gemini, "gemini-3-pro-preview"}}};

/// Nine of ten calls fall into the ten hours of a working day.
double secondsBeforeEnd(Random& random) {
    const std::int64_t day = random.below(EventsDatabase::days);
    const double hours = random.chance(0.9) ? 10 * random.unit() : 24 * random.unit();
    return static_cast<double>(day) * 86400 + hours * 3600;
}

UsageEvent event(std::int64_t number, Random& random) {
    const double place = random.unit();
    const Model& model = models[static_cast<std::size_t>(place * place * static_cast<double>(models.size()))];
    return UsageEvent{.messageId = fmt::format("msg_{:016x}", random.next()),
                      .requestId = fmt::format("req_{}", number),
                      .provider = model.provider,
                      .model = std::string{model.name},
                      .timestamp = Date{EventsDatabase::end().secondsSince1970 - secondsBeforeEnd(random)},
                      .usage = {.input = random.between(1, 4000),
                                .output = random.between(1, 3000),
                                .cacheCreate5m = random.between(0, 2000),
                                .cacheCreate1h = random.between(0, 2000),
                                .cacheRead = random.between(0, 210'000)},
                      .project = fmt::format("project-{}", random.below(40))};
}

void fill(const std::string& database, std::int64_t count) {
    constexpr std::int64_t batch = 20'000;
    UsageIndex index{database};
    Random random{7};
    std::vector<UsageEvent> events;
    for (std::int64_t number = 1; number <= count; ++number) {
        events.push_back(event(number, random));
        if (number % batch != 0 && number != count) continue;
        index.ingest(events, fmt::format("/logs/{}.jsonl", number / batch));
        events.clear();
    }
}

}  // namespace

std::span<const ProviderID> EventsDatabase::providers() noexcept {
    return allProviders;
}

std::string EventsDatabase::path(std::int64_t count) {
    const std::string finished = fmt::format("{}/events-{}-v1.sqlite", BenchmarkData::folder(), count);
    if (!std::filesystem::exists(finished)) {
        std::fprintf(stderr, "generating %s\n", finished.c_str());
        const ScratchFolder scratch;
        const std::string database = scratch.path("events.sqlite");
        fill(database, count);
        std::filesystem::rename(database, finished);
    }
    return finished;
}

}  // namespace quorvane::benchmarks
