#pragma once
#include <QMenu>

#include "QuorvaneWidgetExtension/desktop/WidgetSettings.h"

namespace quorvane::desktop {

/// The menu of one widget. What is chosen is told by signals; the menu changes nothing itself.
class WidgetMenu : public QMenu {
    Q_OBJECT

public:
    explicit WidgetMenu(const InstanceSettings& settings, QWidget* parent = nullptr);

Q_SIGNALS:
    void chosen(const quorvane::desktop::InstanceSettings& settings);  ///< what the widget is to be from now on
    void addRequested();
    void removeRequested();
    void quitRequested();

private:
    /// A submenu of which one entry is checked.
    template <typename Choices, typename Choice, typename Set>
    void addChoices(std::string_view title, const Choices& choices, Choice current, Set set);

    InstanceSettings settings_;
};

}  // namespace quorvane::desktop
