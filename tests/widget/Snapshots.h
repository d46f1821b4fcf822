#pragma once
#include <string>
#include <utility>

#include "QuorvaneCore/snapshots/WidgetSnapshot.h"

namespace quorvane::testing {

/// A row that was spent in dollars.
[[nodiscard]] inline WidgetProviderSnapshot providerRow(std::string id, std::string name, double today) {
    return {.id = std::move(id),
            .name = std::move(name),
            .tintHex = "#D6783F",
            .today = today,
            .window = today * 10,
            .currencyCode = "USD"};
}

/// A row that is told in tokens.
[[nodiscard]] inline WidgetProviderSnapshot tokenRow(std::string id, std::string name, double today) {
    WidgetProviderSnapshot row = providerRow(std::move(id), std::move(name), today);
    row.metric = WidgetValueMetric::Tokens;
    return row;
}

/// What a host leaves at the moment 1000: $12.50 today, fresh for half an hour.
[[nodiscard]] inline WidgetSnapshot widgetSnapshot() {
    return {.generatedAt = Date{1000},
            .title = "All providers",
            .totalToday = 12.5,
            .totalWindow = 125,
            .currencyCode = "USD",
            .windowDays = 30,
            .series = {1, 2, 3},
            .staleAfter = Date{2800}};
}

}  // namespace quorvane::testing
