#include "QuorvaneWidgetExtension/desktop/WidgetMenu.h"

#include <QActionGroup>

#include "QuorvaneWidgetExtension/desktop/QtText.h"

namespace quorvane::desktop {

template <typename Choices, typename Choice, typename Set>
void WidgetMenu::addChoices(std::string_view title, const Choices& choices, Choice current, Set set) {
    QMenu* const menu = addMenu(qString(title));
    auto* const group = new QActionGroup{menu};
    for (const Choice choice : choices) {
        QAction* const action = menu->addAction(qString(displayText(choice)));
        action->setCheckable(true);
        action->setChecked(choice == current);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, choice, set] {
            set(settings_, choice);
            Q_EMIT chosen(settings_);
        });
    }
}

WidgetMenu::WidgetMenu(const InstanceSettings& settings, QWidget* parent) : QMenu{parent}, settings_{settings} {
    addChoices(quorvaneWidgetProviderChoiceTitle, allQuorvaneWidgetProviderChoices, settings.configuration.provider,
               [](InstanceSettings& changed, QuorvaneWidgetProviderChoice choice) {
                   changed.configuration.provider = choice;
               });
    addChoices(quorvaneWidgetTimeframeChoiceTitle, allQuorvaneWidgetTimeframeChoices, settings.configuration.timeframe,
               [](InstanceSettings& changed, QuorvaneWidgetTimeframeChoice choice) {
                   changed.configuration.timeframe = choice;
               });
    QAction* const limits = addAction(qString(QuorvaneWidgetConfigurationIntent::showLimitsTitle));
    limits->setCheckable(true);
    limits->setChecked(settings.configuration.showLimits);
    connect(limits, &QAction::triggered, this, [this](bool isChecked) {
        settings_.configuration.showLimits = isChecked;
        Q_EMIT chosen(settings_);
    });
    addChoices("Size", allQuorvaneWidgetFamilies, settings.family,
               [](InstanceSettings& changed, QuorvaneWidgetFamily choice) { changed.family = choice; });
    addChoices("Appearance", allColorSchemeChoices, settings.colorScheme,
               [](InstanceSettings& changed, ColorSchemeChoice choice) { changed.colorScheme = choice; });
    addSeparator();
    connect(addAction(QStringLiteral("Add another widget")), &QAction::triggered, this, &WidgetMenu::addRequested);
    connect(addAction(QStringLiteral("Remove this widget")), &QAction::triggered, this, &WidgetMenu::removeRequested);
    addSeparator();
    connect(addAction(QStringLiteral("Quit")), &QAction::triggered, this, &WidgetMenu::quitRequested);
}

}  // namespace quorvane::desktop
