#include <QApplication>
#include <QProcess>
#include <QQuickWindow>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace {

/// Leaves the fonts of the pictures, and no others: the same letters on every machine.
void pinFonts(const std::string& folder) {
    const std::string file = folder + "/fonts.conf";
    std::ofstream{file} << R"(<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
    <dir>/usr/share/fonts/opentype/inter</dir>
    <dir>/usr/share/fonts/truetype/dejavu</dir>
    <cachedir>)" << folder
                        << R"(/cache</cachedir>
    <alias binding="strong"><family>Sans Serif</family><prefer><family>Inter</family></prefer></alias>
    <alias binding="strong"><family>sans-serif</family><prefer><family>Inter</family></prefer></alias>
</fontconfig>
)";
    qputenv("FONTCONFIG_FILE", QByteArray::fromStdString(file));
}

/// A session bus on which nothing is but what a test puts there.
class PrivateBus {
public:
    PrivateBus() {
        daemon_.start(QStringLiteral("dbus-daemon"),
                      {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        if (daemon_.waitForReadyRead(20000)) {
            qputenv("DBUS_SESSION_BUS_ADDRESS", daemon_.readAllStandardOutput().trimmed());
        }
    }
    ~PrivateBus() {
        daemon_.kill();
        daemon_.waitForFinished();
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

private:
    QProcess daemon_;
};

bool onlyListsTests(int count, char** arguments) {
    for (int place = 1; place < count; ++place) {
        if (std::strcmp(arguments[place], "--gtest_list_tests") == 0) return true;
    }
    return false;
}

}  // namespace

int main(int count, char** arguments) {
    if (onlyListsTests(count, arguments)) {
        testing::InitGoogleTest(&count, arguments);
        return RUN_ALL_TESTS();
    }
    std::string folder = std::filesystem::temp_directory_path() / "quorvane-widget-tests-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) return 1;
    pinFonts(folder);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(folder));
    for (const char* name : {"QT_SCALE_FACTOR", "QT_QUICK_BACKEND", "QT_STYLE_OVERRIDE", "QT_QPA_PLATFORMTHEME",
                             "XDG_CONFIG_HOME", "DISPLAY", "WAYLAND_DISPLAY"}) {
        qunsetenv(name);
    }
    QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    int status = 1;
    {
        const PrivateBus bus;
        const QApplication application{count, arguments};
        QGuiApplication::setQuitOnLastWindowClosed(false);
        testing::InitGoogleTest(&count, arguments);
        status = RUN_ALL_TESTS();
    }
    std::filesystem::remove_all(folder);
    return status;
}
