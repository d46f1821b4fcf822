#include <vector>

#include <fmt/format.h>

#include "QuorvaneCore/analytics/AnalyticsAggregation.h"
#include "QuorvaneCore/model/ProviderBasis.h"
#include "QuorvaneHost/html/HTMLText.h"
#include "QuorvaneHost/html/Sections.h"

namespace quorvane::host {
namespace {

std::string tile(const std::string& name, const std::string& figure, const std::string& remark) {
    return fmt::format("<div><dt>{}</dt><dd>{}<small>{}</small></dd></div>\n", name, HTMLText::escaped(figure),
                       HTMLText::escaped(remark));
}

/// What of the total nobody is billed for.
std::string notionalRemark(const PageContext& context) {
    double notional = 0;
    for (const PageContext::Provider& provider : context.providers) {
        if (isNotional(providerBasisOf(provider.id))) notional += provider.window.cost;
    }
    if (!(notional > 0)) return {};
    return fmt::format("<p class=\"soft\">{} of it is notional: list prices of what a subscription covers.</p>\n",
                       HTMLText::escaped(context.format.money(notional)));
}

std::string tiles(const PageContext& context) {
    const PageFormat& format = context.format;
    const UsageFigures& today = context.today();
    const UsageFigures& total = context.total;
    const auto days = static_cast<double>(context.drawnDays);
    const TokenMix mix = AnalyticsAggregation::tokenMix(context.rows);
    std::string html = "<dl class=\"tiles\">\n";
    html += tile("Today", format.money(today.cost), format.counted(today.events, "call"));
    html +=
        tile("A day on average", format.money(total.cost / days), "over " + format.counted(context.drawnDays, "day"));
    html += tile("Tokens", format.tokens(total.tokens), format.tokens(mix.output) + " of them output");
    html += tile("Calls", format.count(total.events),
                 format.money(total.events > 0 ? total.cost / static_cast<double>(total.events) : 0) + " each");
    const std::size_t models = AnalyticsAggregation::modelTotals(context.rows).size();
    html += tile("Models", format.count(static_cast<std::int64_t>(models)),
                 "in " + format.counted(static_cast<std::int64_t>(context.data.projects.size()), "project"));
    if (total.tokens > 0) {
        html +=
            tile("Read from cache", format.percent(mix.cacheHitRate(), 1),
                 context.data.cacheSavings > 0 ? "saved " + format.money(context.data.cacheSavings) : "of all tokens");
    }
    return html + "</dl>\n";
}

}  // namespace

std::string totalsSection(const PageContext& context) {
    const PageFormat& format = context.format;
    const std::string dates = context.windowStart == context.lastDay
                                  ? format.localized(format.fullDay(context.lastDay))
                                  : format.localized(format.fullDay(context.windowStart)) + " to " +
                                        format.localized(format.fullDay(context.lastDay));
    std::string html =
        "<header class=\"lead\">\n<h1>What the coding agents cost</h1>\n<p class=\"soft\">" + dates + "</p>\n";
    if (!context.isEmpty()) {
        html += fmt::format("<div class=\"hero\"><div>\n<p class=\"big\">{}</p>\n<p>in {}</p>\n{}</div>\n{}</div>\n",
                            HTMLText::escaped(format.money(context.total.cost)), context.span(),
                            notionalRemark(context), tiles(context));
    }
    return html + "</header>\n";
}

}  // namespace quorvane::host
