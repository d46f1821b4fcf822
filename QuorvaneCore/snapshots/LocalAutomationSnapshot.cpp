#include "QuorvaneCore/snapshots/LocalAutomationSnapshot.h"

#include <string_view>
#include <utility>
#include <variant>

#include <fmt/format.h>

#include "QuorvaneCore/platform/CheckedArithmetic.h"
#include "QuorvaneCore/platform/ISODate.h"
#include "QuorvaneCore/platform/Locale.h"
#include "QuorvaneCore/snapshots/MoneyFormatter.h"
#include "QuorvaneCore/snapshots/detail/Cents.h"

namespace quorvane {
namespace {

std::string money(double value, const std::string& currencyCode) {
    return MoneyFormatter::currency(value, currencyCode, 2, Locale::current());
}

/// Whole tokens, without separators.
std::string tokens(double value) {
    return std::to_string(checkedInt64(value));
}

/// A figure of at most two decimals in its shortest form, and what it counts: "50%", "12.5%".
std::string figure(double value, std::string_view suffix) {
    return fmt::format("{}{}", detail::roundedToCents(value), suffix);
}

std::string_view officialOrEstimate(const LocalAutomationRateLimitWindow& window) {
    return window.official ? "official" : "estimate";
}

std::string headroomLabel(const LocalAutomationHeadroom& headroom) {
    if (headroom.state == "official") {
        return headroom.remainingPercent ? figure(*headroom.remainingPercent, "% left (official)") : "official";
    }
    if (headroom.state == "likely_exhausted") return "likely exhausted";
    return "unknown (no official limit signal)";
}

/// The lines of a report, as they come.
class Report {
public:
    void line(std::string_view text) {
        if (!isFirst_) text_ += '\n';
        isFirst_ = false;
        text_ += text;
    }

    [[nodiscard]] std::string take() { return std::move(text_); }

private:
    std::string text_;
    bool isFirst_ = true;
};

void addTotals(Report& report, const LocalAutomationSnapshot& snapshot) {
    if (snapshot.valueMetric == WidgetValueMetric::Tokens) {
        report.line(fmt::format("Total today: {} tokens (estimate)", tokens(snapshot.totalToday)));
        report.line(fmt::format("Total {}d: {} tokens", snapshot.windowDays, tokens(snapshot.totalWindow)));
        return;
    }
    const std::string& code = snapshot.currencyCode;
    report.line(fmt::format("Total today: {} {} ({})", money(snapshot.totalToday, code), code,
                            reportLabel(snapshot.costBasis)));
    report.line(fmt::format("Total {}d: {} {}", snapshot.windowDays, money(snapshot.totalWindow, code), code));
}

void addProvider(Report& report, const LocalAutomationSnapshot& snapshot, const LocalAutomationProvider& row) {
    if (row.valueMetric == WidgetValueMetric::Tokens) {
        report.line(fmt::format("- {}: today {} tokens, {}d {} tokens, token estimate", row.name, tokens(row.today),
                                snapshot.windowDays, tokens(row.window)));
    } else {
        report.line(fmt::format("- {}: today {}, {}d {}, {}", row.name, money(row.today, row.currencyCode),
                                snapshot.windowDays, money(row.window, row.currencyCode), reportLabel(row.costBasis)));
    }
    if (const auto limits = snapshot.rateLimits.find(row.id); limits != snapshot.rateLimits.end()) {
        if (const auto& primary = limits->second.primary5h) {
            report.line("  - 5h used " + figure(primary->usedPercent, "% ") +
                        std::string{officialOrEstimate(*primary)});
        }
        if (const auto& weekly = limits->second.secondaryWeekly) {
            report.line("  - weekly used " + figure(weekly->usedPercent, "% ") +
                        std::string{officialOrEstimate(*weekly)});
        }
    }
    report.line("  - headroom: " + headroomLabel(row.headroom));
    if (row.aiuWindow) {
        report.line(fmt::format("  - AIU used ({}d): {} (consumption, not $ or %)", snapshot.windowDays,
                                figure(*row.aiuWindow, " AIU")));
    }
}

}  // namespace

LocalAutomationHeadroom LocalAutomationHeadroom::from(const ProviderHeadroom& headroom) {
    LocalAutomationHeadroom record{.state = std::string{headroom.stateToken()}};
    if (const auto* official = std::get_if<ProviderHeadroom::Official>(&headroom.verdict)) {
        record.remainingPercent = detail::roundedToCents(official->remainingPercent);
        record.windowMinutes = official->windowMinutes;
        record.resetsAt = official->resetsAt;
    }
    return record;
}

std::string LocalAutomationSnapshot::markdownReport() const {
    Report report;
    report.line("# Quorvane Local Snapshot");
    report.line("");
    report.line("Generated: " + ISODate::text(generatedAt));
    report.line(fmt::format("Window: {}d", windowDays));
    addTotals(report, *this);
    report.line("");
    report.line("## Providers");
    for (const LocalAutomationProvider& row : providers)
        addProvider(report, *this, row);
    if (notice) {
        report.line("");
        report.line("Notice: " + *notice);
    }
    return report.take();
}

bool LocalAutomationSnapshot::hasSameContent(const LocalAutomationSnapshot& other) const {
    return source == other.source && windowDays == other.windowDays && currencyCode == other.currencyCode &&
           totalToday == other.totalToday && totalWindow == other.totalWindow && costBasis == other.costBasis &&
           series == other.series && providers == other.providers && rateLimits == other.rateLimits &&
           status == other.status && notice == other.notice;
}

}  // namespace quorvane
