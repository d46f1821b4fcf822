#include "QuorvaneHost/html/AnalyticsPage.h"

#include <array>

#include <fmt/format.h>

#include "QuorvaneHost/html/HTMLText.h"
#include "QuorvaneHost/html/HeatLevels.h"
#include "QuorvaneHost/html/PageAssets.h"
#include "QuorvaneHost/html/Sections.h"

namespace quorvane::host {
namespace {

constexpr std::string_view policy =
    "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'; img-src data:; base-uri 'none'; "
    "form-action 'none'";

std::string head(const PageContext& context) {
    return fmt::format(
        "<!DOCTYPE html>\n<html lang=\"{}\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"{}\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<meta name=\"color-scheme\" content=\"light dark\">\n<meta name=\"referrer\" content=\"no-referrer\">\n"
        "<title>Quorvane: {} to {}</title>\n<link rel=\"icon\" href=\"data:,\">\n<style>\n{}\n{}</style>\n</head>\n",
        context.format.pageLanguage(), policy, HTMLText::escaped(context.format.fullDay(context.windowStart)),
        HTMLText::escaped(context.format.fullDay(context.lastDay)), HeatLevels::styles(), pageStyles());
}

std::string choice(const char* group, const std::string& id, const std::string& label, bool isChecked) {
    return fmt::format("<input type=\"radio\" name=\"{0}\" id=\"{1}\"{2}><label for=\"{1}\">{3}</label>", group, id,
                       isChecked ? " checked" : "", label);
}

std::string measureSwitch() {
    std::string html = "<fieldset class=\"switch\"><legend class=\"vh\">What the charts show</legend>";
    for (const AnalyticsMeasure measure : pageMeasures)
        html += choice("measure", "m-" + std::string{rawName(measure)}, titleOf(measure), measure == pageMeasures[0]);
    return html + "</fieldset>\n";
}

/// A disc that is half dark, a sun, a moon.
std::string schemeSwitch() {
    struct Scheme {
        const char* id;
        const char* name;
        const char* shape;
    };
    static constexpr std::array<Scheme, 3> schemes{
        {{"t-auto", "Colours of the system",
          "<circle cx=\"8\" cy=\"8\" r=\"5.5\"/><path class=\"full\" d=\"M8 2.5a5.5 5.5 0 0 1 0 11z\"/>"},
         {"t-light", "Light colours",
          "<circle cx=\"8\" cy=\"8\" r=\"3\"/><path d=\"M8 .8v2M8 13.2v2M.8 8h2M13.2 8h2M2.9 2.9l1.4 1.4M11.7 11.7l1.4 "
          "1.4M2.9 13.1l1.4-1.4M11.7 4.3l1.4-1.4\"/>"},
         {"t-dark", "Dark colours", "<path d=\"M13 9.8A5.6 5.6 0 0 1 6.2 3 5.6 5.6 0 1 0 13 9.8z\"/>"}}};
    std::string html = "<fieldset class=\"switch icons\"><legend class=\"vh\">Colour scheme</legend>";
    for (const Scheme& scheme : schemes) {
        html +=
            choice("scheme", scheme.id,
                   fmt::format("<svg viewBox=\"0 0 16 16\" aria-hidden=\"true\">{}</svg><span class=\"vh\">{}</span>",
                               scheme.shape, scheme.name),
                   scheme.id == schemes[0].id);
    }
    return html + "</fieldset>\n";
}

std::string sections(const PageContext& context) {
    if (context.isEmpty()) {
        const std::string apart =
            context.estimates.empty() ? std::string{} : sectionFrame("agents", "Agents", "", providersTable(context));
        return "<p class=\"none\">No model calls in these days.</p>\n" + apart + notesSection(context);
    }
    return dailySection(context) + calendarSection(context) + modelsSection(context) + tokenMixSection(context) +
           projectsSection(context) + weekSection(context) + notesSection(context);
}

}  // namespace

std::string analyticsPage(const AnalyticsPageData& data) {
    const PageContext context{data};
    std::string html = head(context);
    html +=
        "<body>\n<a class=\"skip\" href=\"#figures\">Skip to the figures</a>\n<div class=\"top\"><div>"
        "<strong>Quorvane</strong>\n";
    if (!context.isEmpty()) html += measureSwitch();
    html += schemeSwitch() + "</div></div>\n<script>\n" + std::string{pageScript()} + "</script>\n";
    html += "<main id=\"figures\" tabindex=\"-1\">\n" + totalsSection(context) + sections(context) + "</main>\n";
    return html + "</body>\n</html>\n";
}

}  // namespace quorvane::host
