#include <map>

#include <fmt/format.h>

#include "QuorvaneCore/model/ProviderBasis.h"
#include "QuorvaneCore/model/ProviderCatalog.h"
#include "QuorvaneCore/platform/ISODate.h"
#include "QuorvaneHost/html/HTMLText.h"
#include "QuorvaneHost/html/Sections.h"

namespace quorvane::host {
namespace {

std::string item(const std::string& html) {
    return "<li>" + html + "</li>\n";
}

std::string names(const std::vector<PageContext::Provider>& providers, bool isNotionalOnly) {
    std::string list;
    for (const PageContext::Provider& provider : providers) {
        if (isNotionalOnly && !isNotional(providerBasisOf(provider.id))) continue;
        list += (list.empty() ? "" : ", ") + HTMLText::escaped(ProviderCatalog::descriptor(provider.id)->name);
    }
    return list;
}

std::string unpriced(const PageContext& context) {
    constexpr std::size_t most = 10;
    std::map<std::string, UsageFigures> byModel;
    for (const ModelDaySummary& row : context.rows) {
        if (context.data.unpricedModels.count(row.model) != 0) byModel[row.model] += UsageFigures{row};
    }
    std::string html;
    std::size_t shown = 0;
    for (const auto& [model, figures] : byModel) {
        if (++shown > most) {
            html +=
                item(fmt::format("No price for {} more.",
                                 context.format.counted(static_cast<std::int64_t>(byModel.size() - most), "model")));
            break;
        }
        html += item(fmt::format("No price for {}: {} tokens in {} are not in the costs.",
                                 model.empty() ? "calls without a model" : HTMLText::name(model),
                                 HTMLText::escaped(context.format.tokens(figures.tokens)),
                                 HTMLText::escaped(context.format.counted(figures.events, "call"))));
    }
    return html;
}

}  // namespace

std::string notesSection(const PageContext& context) {
    std::string items = unpriced(context);
    items += item("Costs are tokens times the price list, in US dollars. Nothing on this page is a bill.");
    const std::string notional = names(context.providers, true);
    if (!notional.empty())
        items += item(notional + ": notional, the list prices of what a subscription covers. They are in the totals.");
    const std::string estimated = names(context.estimates, false);
    if (!estimated.empty())
        items += item(estimated + ": an estimate, too rough for money. They are listed and are not in the totals.");
    if (context.firstDay != context.windowStart) {
        items += item("Nothing was recorded before " +
                      context.format.localized(context.format.fullDay(context.firstDay)) + ", where the charts begin.");
    }
    items += item("Days and hours are those of " + HTMLText::escaped(context.data.calendar.timeZoneID()) + ".");
    items += item("Made by Quorvane from the logs on this machine, at <time>" + ISODate::text(context.data.now) +
                  "</time>. The page asks nothing of the network.");
    return sectionFrame("notes", "What the figures are", "", "<ul>\n" + items + "</ul>\n");
}

}  // namespace quorvane::host
