#pragma once
#include <QObject>
#include <memory>
#include <vector>

#include "QuorvaneWidgetExtension/desktop/WidgetInstance.h"

namespace quorvane::desktop {

/// All widgets of the user's: as many as the settings have, one at the first start.
class WidgetDesktop : public QObject {
    Q_OBJECT

public:
    explicit WidgetDesktop(QObject* parent = nullptr);

    /// Opens the windows.
    void open();

    [[nodiscard]] const std::vector<std::unique_ptr<WidgetInstance>>& instances() const noexcept { return instances_; }

    void add();

    /// With the last one goes the program; its settings stay.
    void remove(WidgetInstance& instance);

Q_SIGNALS:
    void quitRequested();

private:
    WidgetInstance& make(const QString& id);

    WidgetSettings settings_;
    DesktopColorScheme colorScheme_;
    std::vector<std::unique_ptr<WidgetInstance>> instances_;
};

}  // namespace quorvane::desktop
