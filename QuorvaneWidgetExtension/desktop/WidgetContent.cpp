#include "QuorvaneWidgetExtension/desktop/WidgetContent.h"

#include <QFile>

#include "QuorvaneWidgetExtension/desktop/QtText.h"

namespace quorvane::desktop {
namespace {

/// The picture of that name; of a provider that has none, the dot that stands for any.
QString picturePath(const std::string& asset) {
    const QString path = QStringLiteral(":/quorvane/widget/") + qString(asset) + QStringLiteral(".svg");
    return QFile::exists(path) ? path : QStringLiteral(":/quorvane/widget/provider.svg");
}

WidgetChip chipOf(const ProviderMarkChip& chip) {
    WidgetChip result;
    result.picture = picturePath(chip.asset);
    result.color = qColor(chip.color);
    result.glyphColor = qColor(chip.glyphColor);
    result.container = chip.container;
    result.glyph = chip.glyph;
    return result;
}

QString badgeText(const std::optional<ProviderBasisBadge>& badge) {
    return badge ? qString(badge->text) : QString{};
}

WidgetProviderLine lineOf(const ProviderGaugeRow& row) {
    WidgetProviderLine line;
    line.chip = chipOf(row.chip);
    line.name = qString(row.name);
    line.textSize = row.nameSize;
    line.minimumScale = ProviderGaugeRow::minimumScale;
    line.badge = badgeText(row.badge);
    line.value = qString(row.value);
    line.valueColumn = row.valueColumn;
    if (row.limit) {
        line.hasLimit = true;
        line.limitFraction = row.limit->fraction();
        line.limitColor = qColor(row.limit->tint);
    }
    return line;
}

WidgetProviderLine lineOf(const ProviderGridCell& cell) {
    WidgetProviderLine line;
    line.chip = chipOf(cell.chip);
    line.name = qString(cell.name);
    line.textSize = ProviderGridCell::textSize;
    line.minimumScale = ProviderGridCell::minimumScale;
    line.value = qString(cell.value);
    return line;
}

WidgetGauges gaugesOf(const ProviderGaugeList& list) {
    WidgetGauges gauges;
    gauges.isGrid = std::holds_alternative<std::vector<ProviderGridCell>>(list.providers);
    std::visit(
        [&gauges](const auto& providers) {
            for (const auto& provider : providers)
                gauges.providers.append(QVariant::fromValue(lineOf(provider)));
        },
        list.providers);
    gauges.spacing = ProviderGaugeList::stackSpacing;
    gauges.limitColumn = list.limitColumn;
    gauges.more = qString(list.more);
    return gauges;
}

WidgetSeries seriesOf(const MiniSparkline& sparkline, WidgetColorScheme scheme) {
    WidgetSeries series;
    series.values = QList<qreal>{sparkline.values.begin(), sparkline.values.end()};
    series.color = qColor(sparkline.color(scheme));
    return series;
}

WidgetRemark remarkOf(const std::optional<WidgetNote>& note, WidgetColorScheme scheme) {
    WidgetRemark remark;
    if (note) {
        remark.text = qString(note->text);
        remark.color = qColor(note->color(scheme));
    }
    return remark;
}

void setHeader(WidgetContent& content, const WidgetHeader& header) {
    content.productName = qString(WidgetHeader::productName);
    content.title = qString(header.title);
    content.compactHeader = header.compact;
}

WidgetContent contentOf(const SmallSpendWidget& widget, WidgetColorScheme scheme) {
    WidgetContent content;
    setHeader(content, widget.header);
    content.totalToday = qString(widget.totalToday);
    content.badge = badgeText(widget.badge);
    content.todayLabel = qString(widget.todayLabel);
    content.series = seriesOf(widget.sparkline, scheme);
    content.caption = remarkOf(widget.caption, scheme);
    return content;
}

WidgetContent contentOf(const MediumSpendWidget& widget, WidgetColorScheme scheme) {
    WidgetContent content;
    setHeader(content, widget.header);
    content.totalToday = qString(widget.totalToday);
    content.gauges = gaugesOf(widget.gauges);
    content.caption = remarkOf(widget.caption, scheme);
    return content;
}

WidgetContent contentOf(const LargeSpendWidget& widget, WidgetColorScheme scheme) {
    WidgetContent content;
    setHeader(content, widget.header);
    content.totalToday = qString(widget.totalToday);
    content.todayLabel = qString(widget.todayLabel);
    content.totalWindow = qString(widget.totalWindow);
    content.windowLabel = qString(widget.windowLabel);
    content.series = seriesOf(widget.sparkline, scheme);
    content.gauges = gaugesOf(widget.gauges);
    content.freshness = remarkOf(widget.footer.freshness, scheme);
    content.notice = remarkOf(widget.footer.notice, scheme);
    return content;
}

}  // namespace

QColor qColor(const WidgetColor& color) {
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue), static_cast<float>(color.opacity));
}

WidgetTheme WidgetTheme::of(WidgetColorScheme scheme) {
    WidgetTheme theme;
    theme.primaryText = qColor(WidgetPalette::primaryText(scheme));
    theme.mutedText = qColor(WidgetPalette::mutedText(scheme));
    theme.warningText = qColor(WidgetPalette::warningText(scheme));
    theme.hairline = qColor(WidgetPalette::primaryText(scheme).withOpacity(0.08));
    theme.badgeFill = qColor(WidgetPalette::warningText(scheme).withOpacity(0.12));
    for (const WidgetColor& color : WidgetPalette::background(scheme))
        theme.background.append(qColor(color));
    theme.honeyWash = qColor(WidgetPalette::honeyWash(scheme));
    theme.markRim = qColor(WidgetPalette::markRim(scheme));
    theme.mascotBadge = qColor(WidgetPalette::mascotBadge(scheme));
    theme.markInk = qColor(WidgetPalette::primaryText(WidgetColorScheme::Light));
    theme.gaugeTrack = qColor(WidgetPalette::gaugeTrack(scheme).withOpacity(LimitCapsule::trackOpacity));
    return theme;
}

WidgetContent WidgetContent::of(const QuorvaneWidgetEntryView& view, const WidgetEnvironment& environment) {
    return std::visit([&](const auto& widget) { return contentOf(widget, environment.colorScheme); },
                      view.body(environment));
}

}  // namespace quorvane::desktop
