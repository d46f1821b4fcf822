#include "QuorvaneWidgetExtension/desktop/WidgetModel.h"

#include <QLocale>

#include "QuorvaneWidgetExtension/desktop/QtText.h"

namespace quorvane::desktop {

void WidgetModel::show(const QuorvaneWidgetEntryView& view, const WidgetEnvironment& environment) {
    family_ = qString(rawName(view.family));
    theme_ = WidgetTheme::of(environment.colorScheme);
    content_ = WidgetContent::of(view, environment);
    accessibilitySummary_ = QString::fromStdString(view.accessibilitySummary(environment));
    isMirrored_ = QLocale{QString::fromStdString(environment.locale.identifier())}.textDirection() == Qt::RightToLeft;
    Q_EMIT changed();
}

}  // namespace quorvane::desktop
