#include "QuorvaneWidgetExtension/desktop/WidgetSettings.h"

#include <QStandardPaths>
#include <algorithm>

#include "QuorvaneWidgetExtension/desktop/QtText.h"

namespace quorvane::desktop {
namespace {

QString key(const QString& instance, const char* name) {
    return QStringLiteral("widgets/%1/%2").arg(instance, QString::fromLatin1(name));
}

/// The value of a stored word.
template <typename Value, typename FromRawName>
Value stored(const QSettings& settings, const QString& key, Value otherwise, FromRawName fromRawName) {
    return fromRawName(settings.value(key).toString().toStdString()).value_or(otherwise);
}

}  // namespace

WidgetSettings::WidgetSettings(const QString& file) : settings_{file, QSettings::IniFormat} {}

QString WidgetSettings::defaultFile() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Quorvane/quorvane-widget.ini");
}

QStringList WidgetSettings::instances() const {
    QSettings reader{settings_.fileName(), QSettings::IniFormat};
    reader.beginGroup(QStringLiteral("widgets"));
    QStringList ids = reader.childGroups();
    std::sort(ids.begin(), ids.end(), [](const QString& left, const QString& right) {
        return std::pair{left.toInt(), left} < std::pair{right.toInt(), right};
    });
    return ids;
}

QString WidgetSettings::newInstance() const {
    int last = 0;
    for (const QString& id : instances())
        last = std::max(last, id.toInt());
    return QString::number(last + 1);
}

InstanceSettings WidgetSettings::read(const QString& instance) const {
    InstanceSettings result;
    result.configuration.provider = stored(settings_, key(instance, "view"), result.configuration.provider,
                                           quorvaneWidgetProviderChoiceFromRawName);
    result.configuration.timeframe = stored(settings_, key(instance, "timeframe"), result.configuration.timeframe,
                                            quorvaneWidgetTimeframeChoiceFromRawName);
    const QString limits = settings_.value(key(instance, "showLimits")).toString();
    if (limits == QStringLiteral("false")) result.configuration.showLimits = false;
    result.family = stored(settings_, key(instance, "size"), result.family, quorvaneWidgetFamilyFromRawName);
    result.colorScheme =
        stored(settings_, key(instance, "colorScheme"), result.colorScheme, colorSchemeChoiceFromRawName);
    const QVariant position = settings_.value(key(instance, "position"));
    if (position.canConvert<QPoint>()) result.position = position.toPoint();
    return result;
}

void WidgetSettings::write(const QString& instance, const InstanceSettings& settings) {
    settings_.setValue(key(instance, "view"), qString(rawName(settings.configuration.provider)));
    settings_.setValue(key(instance, "timeframe"), qString(rawName(settings.configuration.timeframe)));
    settings_.setValue(key(instance, "showLimits"), settings.configuration.showLimits);
    settings_.setValue(key(instance, "size"), qString(rawName(settings.family)));
    settings_.setValue(key(instance, "colorScheme"), qString(rawName(settings.colorScheme)));
    if (settings.position) settings_.setValue(key(instance, "position"), *settings.position);
    settings_.sync();
}

void WidgetSettings::remove(const QString& instance) {
    settings_.remove(QStringLiteral("widgets/%1").arg(instance));
    settings_.sync();
}

}  // namespace quorvane::desktop
