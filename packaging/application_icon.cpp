// application_icon ICON.svg FILE.png…: draws the icon into each file; the folder two above the file
// names its size, as in 48x48/apps/velmora.png. Runs at build time.
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char** argv) {
    QSvgRenderer icon(QString::fromLocal8Bit(argc > 1 ? argv[1] : ""));
    if (!icon.isValid()) {
        std::fputs("application_icon: the drawing can't be read\n", stderr);
        return 1;
    }
    for (int i = 2; i < argc; ++i) {
        const QString path = QString::fromLocal8Bit(argv[i]);
        const int side = path.section(u'/', -3, -3).section(u'x', 0, 0).toInt();
        QImage picture(side, side, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        icon.render(&painter);
        painter.end();
        QDir().mkpath(QFileInfo(path).path());
        if (side <= 0 || !picture.save(path)) {
            std::fprintf(stderr, "application_icon: %s can't be written\n", argv[i]);
            return 1;
        }
    }
    return 0;
}
