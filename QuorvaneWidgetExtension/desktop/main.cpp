#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QImage>
#include <QLockFile>
#include <QQuickWindow>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "QuorvaneCore/platform/AtomicFile.h"
#include "QuorvaneCore/platform/Clock.h"
#include "QuorvaneCore/snapshots/WidgetSnapshotStore.h"
#include "QuorvaneWidgetExtension/QuorvaneWidget/QuorvaneWidgetTimelineProvider.h"
#include "QuorvaneWidgetExtension/desktop/PictureRenderer.h"
#include "QuorvaneWidgetExtension/desktop/QuitSignals.h"
#include "QuorvaneWidgetExtension/desktop/WidgetDesktop.h"
#include "QuorvaneWidgetExtension/desktop/WidgetOptions.h"

namespace quorvane::desktop {
namespace {

void say(const std::string& text) {
    std::fprintf(stderr, "quorvane-widget: %s\n", text.c_str());
}

/// The toolkit's own words on standard error, in one line, and its fatal errors without a core dump.
void passOnMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    const std::string firstLine = text.section(QLatin1Char('\n'), 0, 0).toStdString();
    if (type == QtFatalMsg) {
        say("cannot open a window: " + firstLine);
        std::_Exit(1);
    }
    // The first comes before a fatal error that says the same, the second is of no concern to a widget.
    const bool isNoise = firstLine.find("could not connect to display") != std::string::npos ||
                         firstLine.starts_with("QStandardPaths: XDG_RUNTIME_DIR not set");
    if (type == QtCriticalMsg || (type == QtWarningMsg && !isNoise)) say(firstLine);
}

/// A line for a widget that has nothing of its user's to show.
void tellWithoutFile() {
    const WidgetSnapshotStore store;
    if (!store.readIfAvailable()) {
        say("no snapshot to show at " + store.snapshotURL() +
            ", so it shows a sample; write one with: quorvane snapshot");
    }
}

QuorvaneWidgetEntryView entryView(const WidgetOptions& options) {
    return {.entry = QuorvaneWidgetTimelineProvider{}.snapshot(options.configuration, {}), .family = options.family};
}

WidgetEnvironment surroundings(const WidgetOptions& options) {
    return {.colorScheme = options.colorScheme, .locale = Locale::current(), .now = Clock::now()};
}

int describe(const WidgetOptions& options) {
    tellWithoutFile();
    std::printf("%s\n", entryView(options).accessibilitySummary(surroundings(options)).c_str());
    return std::fflush(stdout) == 0 ? 0 : 1;
}

int render(const WidgetOptions& options, int& count, char** arguments) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application{count, arguments};
    tellWithoutFile();
    QImage picture = renderedPicture(entryView(options), surroundings(options), options.scale);
    QBuffer png;
    if (picture.isNull() || !picture.save(&png, "PNG")) {
        say("the picture could not be drawn");
        return 1;
    }
    const QByteArray& bytes = png.data();
    replaceFile(options.picture, {bytes.constData(), static_cast<std::size_t>(bytes.size())});
    return 0;
}

bool hasDisplay() {
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY") || qEnvironmentVariableIsSet("DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

int openWindows(int& count, char** arguments) {
    if (!hasDisplay()) {
        say("no display: neither WAYLAND_DISPLAY nor DISPLAY is set; --render FILE.png draws without one");
        return 1;
    }
    QApplication application{count, arguments};
    QGuiApplication::setDesktopFileName(QStringLiteral("quorvane-widget"));
    QGuiApplication::setWindowIcon(QIcon{QStringLiteral(":/quorvane/widget/icons/quorvane-widget.svg")});
    QGuiApplication::setQuitOnLastWindowClosed(false);

    // From here on the lock is given back, whenever the end comes.
    const QuitSignals signals_;
    QObject::connect(&signals_, &QuitSignals::received, &application, &QCoreApplication::quit);

    // Two processes would each save the same widgets.
    const QString folder = QFileInfo{WidgetSettings{}.file()}.path();
    QDir{}.mkpath(folder);
    QLockFile lock{folder + QStringLiteral("/quorvane-widget.lock")};
    lock.setStaleLockTime(0);
    if (!lock.tryLock() && lock.error() == QLockFile::LockFailedError) {
        say("already running; add a widget from the menu of one that is there");
        return 1;
    }
    tellWithoutFile();
    WidgetDesktop desktop;
    QObject::connect(&desktop, &WidgetDesktop::quitRequested, &application, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    desktop.open();
    return QApplication::exec();
}

int run(int count, char** arguments) {
    const std::variant<WidgetOptions, int> parsed =
        WidgetOptions::parse(std::vector<std::string>{arguments + 1, arguments + count});
    if (const int* const status = std::get_if<int>(&parsed)) return *status;
    const WidgetOptions& options = std::get<WidgetOptions>(parsed);
    qInstallMessageHandler(passOnMessage);
    // Small and still for most of the time: drawn by the processor it takes less memory and power than a context of
    // the graphics card, and looks the same everywhere.
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND")) QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    switch (options.task) {
        case WidgetOptions::Task::describe: return describe(options);
        case WidgetOptions::Task::render: return render(options, count, arguments);
        case WidgetOptions::Task::openWindows: break;
    }
    return openWindows(count, arguments);
}

}  // namespace
}  // namespace quorvane::desktop

int main(int count, char** arguments) {
    try {
        return quorvane::desktop::run(count, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quorvane-widget: %s\n", error.what());
        return 1;
    }
}
