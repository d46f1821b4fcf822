#pragma once
#include <QPoint>
#include <QSettings>
#include <QStringList>
#include <optional>

#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetConfigurationIntent.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetFamily.h"
#include "QuorvaneWidgetExtension/desktop/ColorSchemeChoice.h"

namespace quorvane::desktop {

/// What is kept of one widget from one start to the next.
struct InstanceSettings {
    QuorvaneWidgetConfigurationIntent configuration;
    QuorvaneWidgetFamily family = QuorvaneWidgetFamily::medium;
    ColorSchemeChoice colorScheme = ColorSchemeChoice::desktop;
    std::optional<QPoint> position;  ///< of the top left corner on the screens; absent where it never stood

    friend bool operator==(const InstanceSettings&, const InstanceSettings&) = default;
};

/// The widgets that the user has, in an INI file in the platform's place for settings
/// ("~/.config/Quorvane/quorvane-widget.ini"). What is missing or not understood there is the default.
class WidgetSettings {
public:
    explicit WidgetSettings(const QString& file = defaultFile());

    [[nodiscard]] static QString defaultFile();

    /// The ids of the widgets, in the order of their making.
    [[nodiscard]] QStringList instances() const;

    /// A new widget's id, not yet among `instances()`.
    [[nodiscard]] QString newInstance() const;

    [[nodiscard]] InstanceSettings read(const QString& instance) const;
    void write(const QString& instance, const InstanceSettings& settings);
    void remove(const QString& instance);

    [[nodiscard]] QString file() const { return settings_.fileName(); }

private:
    QSettings settings_;
};

}  // namespace quorvane::desktop
