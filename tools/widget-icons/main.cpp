// Draws the application's icon to a PNG for each size that the icon themes have:
// quorvane_widget_icons ICON.svg FOLDER SIZE... makes FOLDER/SIZExSIZE.png.
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <cstdio>

int main(int count, char** arguments) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application{count, arguments};
    const QStringList words = QCoreApplication::arguments();
    if (words.size() < 4) return 2;
    QSvgRenderer icon{words[1]};
    if (!icon.isValid()) {
        std::fprintf(stderr, "cannot read %s\n", words[1].toUtf8().constData());
        return 1;
    }
    for (const QString& size : words.mid(3)) {
        const int pixels = size.toInt();
        QImage picture{pixels, pixels, QImage::Format_ARGB32_Premultiplied};
        picture.fill(Qt::transparent);
        QPainter painter{&picture};
        icon.render(&painter);
        painter.end();
        const QString file = QStringLiteral("%1/%2x%2.png").arg(words[2], size);
        if (!picture.save(file)) {
            std::fprintf(stderr, "cannot write %s\n", file.toUtf8().constData());
            return 1;
        }
    }
    return 0;
}
