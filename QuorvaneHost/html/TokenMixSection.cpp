#include <array>
#include <map>
#include <vector>

#include <fmt/format.h>

#include "QuorvaneCore/analytics/AnalyticsAggregation.h"
#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneHost/html/HTMLText.h"
#include "QuorvaneHost/html/Sections.h"

namespace quorvane::host {
namespace {

struct Kind {
    const char* name;
    const char* remark;
    std::int64_t TokenMix::*count;
};

/// The dearest for its count first, so that the slivers stand together.
constexpr std::array<Kind, 5> kinds{{{"Output", "what the models wrote", &TokenMix::output},
                                     {"Input", "sent anew", &TokenMix::input},
                                     {"Cache write, 1 h", "kept for an hour", &TokenMix::cache1h},
                                     {"Cache write, 5 min", "kept for five minutes", &TokenMix::cache5m},
                                     {"Cache read", "sent before, at a fraction of the price", &TokenMix::cacheRead}}};

/// One bar of the five kinds, of a thousand units' width.
std::string bar(const PageFormat& format, const TokenMix& mix, const std::string& id, const std::string& whose) {
    constexpr double width = 1000;
    const auto total = static_cast<double>(mix.total());
    std::string shapes;
    std::string shares;
    double left = 0;
    for (std::size_t at = 0; at < kinds.size(); ++at) {
        const std::int64_t count = mix.*kinds[at].count;
        if (count == 0) continue;
        const double share = static_cast<double>(count) / total * width;
        shapes += fmt::format("<rect class=\"k{}\" x=\"{:.1f}\" width=\"{:.1f}\" height=\"10\"/>", at, left, share);
        shares += fmt::format("{}{} {}", shares.empty() ? "" : ", ", kinds[at].name,
                              format.percent(static_cast<double>(count), total));
        left += share;
    }
    return fmt::format(
        "<svg class=\"mix\" viewBox=\"0 0 1000 10\" preserveAspectRatio=\"none\" role=\"img\" "
        "aria-labelledby=\"{0}\"><title id=\"{0}\">{1}: {2}</title>{3}</svg>",
        id, HTMLText::escaped(whose), HTMLText::escaped(shares), shapes);
}

std::string kindsTable(const PageFormat& format, const TokenMix& mix) {
    std::string html =
        "<table class=\"figures kinds\"><caption class=\"vh\">Tokens by kind</caption>\n<thead><tr><th scope=\"col\">"
        "Kind</th><th scope=\"col\">Tokens</th><th scope=\"col\">Share</th></tr></thead>\n<tbody>\n";
    const auto total = static_cast<double>(mix.total());
    for (std::size_t at = 0; at < kinds.size(); ++at) {
        const std::int64_t count = mix.*kinds[at].count;
        html += fmt::format(
            "<tr><th scope=\"row\"><b class=\"sw k{}\"></b>{}<small>{}</small></th><td>{}</td>"
            "<td>{}</td></tr>\n",
            at, kinds[at].name, kinds[at].remark, HTMLText::escaped(format.tokens(count)),
            HTMLText::escaped(format.percent(static_cast<double>(count), total)));
    }
    return html + "</tbody>\n<tfoot><tr><th scope=\"row\">Total</th><td>" +
           HTMLText::escaped(format.tokens(mix.total())) + "</td><td></td></tr></tfoot></table>\n";
}

std::string providersMix(const PageContext& context) {
    std::map<ProviderID, std::vector<ModelDaySummary>> rows;
    for (const ModelDaySummary& row : context.rows)
        rows[row.provider].push_back(row);
    std::string html =
        "<table class=\"figures mixes\"><caption class=\"vh\">Tokens by kind and agent</caption>\n<thead><tr>"
        "<th scope=\"col\">Agent</th><th scope=\"col\">Mix</th><th scope=\"col\">Cached</th></tr></thead>\n<tbody>\n";
    for (const PageContext::Provider& provider : context.providers) {
        const TokenMix mix = AnalyticsAggregation::tokenMix(rows.at(provider.id));
        if (mix.total() == 0) continue;
        const std::string& name = ProviderCatalog::descriptor(provider.id)->shortName;
        html += fmt::format("<tr><th scope=\"row\">{}</th><td>{}</td><td>{}</td></tr>\n", HTMLText::escaped(name),
                            bar(context.format, mix, "mix-" + std::string{rawName(provider.id)}, name),
                            HTMLText::escaped(context.format.percent(mix.cacheHitRate(), 1)));
    }
    return html + "</tbody></table>\n";
}

}  // namespace

std::string tokenMixSection(const PageContext& context) {
    const PageFormat& format = context.format;
    const TokenMix mix = AnalyticsAggregation::tokenMix(context.rows);
    std::string finding =
        HTMLText::escaped(format.percent(mix.cacheHitRate(), 1)) + " of all tokens were read from a cache";
    if (context.data.cacheSavings > 0)
        finding += ", which saved " + HTMLText::escaped(format.money(context.data.cacheSavings));
    const std::string side = "<p class=\"find\">" + finding + ".</p>\n";
    const std::string main = "<div class=\"whole\">" + bar(format, mix, "mix-all", "All agents") +
                             "</div>\n<div class=\"pair\">\n" + kindsTable(format, mix) + providersMix(context) +
                             "</div>\n";
    return mix.total() == 0 ? std::string{} : sectionFrame("tokens", "Token mix", side, main);
}

}  // namespace quorvane::host
