#include <fmt/format.h>

#include "QuorvaneCore/model/ProviderBasis.h"
#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneHost/html/HTMLText.h"
#include "QuorvaneHost/html/Sections.h"

namespace quorvane::host {
namespace {

std::string cells(const PageFormat& format, const UsageFigures& today, const UsageFigures& window,
                  const std::string& share) {
    return fmt::format(
        "<td class=\"wide\">{}</td><td class=\"nc\">{}</td><td class=\"wide\">{}</td>"
        "<td class=\"nt\">{}</td><td class=\"ne\">{}</td></tr>\n",
        HTMLText::escaped(format.money(today.cost)), HTMLText::escaped(format.money(window.cost)), share,
        HTMLText::escaped(format.tokens(window.tokens)), HTMLText::escaped(format.count(window.events)));
}

std::string share(const PageContext& context, const UsageFigures& figures) {
    return perMeasure([&](AnalyticsMeasure measure) {
        return HTMLText::escaped(context.format.percent(figures.value(measure), context.total.value(measure)));
    });
}

/// How to read a provider's dollars, where they are not what is billed.
std::string badgeOf(ProviderID provider) {
    const ProviderBasis basis = providerBasisOf(provider);
    return basis == ProviderBasis::Real ? std::string{} : " <small>" + std::string{badge(basis)} + "</small>";
}

std::string name(ProviderID provider, const std::string& mark) {
    return "<tr><th scope=\"row\">" + providerSwatch(provider) +
           HTMLText::escaped(ProviderCatalog::descriptor(provider)->name) + mark + badgeOf(provider) + "</th>";
}

}  // namespace

std::string providersTable(const PageContext& context) {
    const PageFormat& format = context.format;
    std::string html =
        "<table class=\"figures agents\"><caption class=\"vh\">The agents, the most expensive first</caption>\n"
        "<thead><tr><th scope=\"col\">Agent</th><th scope=\"col\" class=\"wide\">Today</th>"
        "<th scope=\"col\" class=\"nc\">Cost</th><th scope=\"col\" class=\"wide\">Share</th>"
        "<th scope=\"col\" class=\"nt\">Tokens</th><th scope=\"col\" class=\"ne\">Calls</th></tr></thead>\n<tbody>\n";
    for (const PageContext::Provider& provider : context.providers)
        html += name(provider.id, "") + cells(format, provider.today, provider.window, share(context, provider.window));
    html += "</tbody>\n<tfoot>\n<tr><th scope=\"row\">Total</th>" +
            cells(format, context.isEmpty() ? UsageFigures{} : context.today(), context.total, "");
    for (const PageContext::Provider& provider : context.estimates)
        html += name(provider.id, " ~") + cells(format, provider.today, provider.window, "");
    html += "</tfoot></table>\n";
    if (!context.estimates.empty()) html += "<p class=\"soft note\">~ an estimate, not in the totals</p>\n";
    return html;
}

}  // namespace quorvane::host
