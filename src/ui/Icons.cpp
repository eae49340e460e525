#include "ui/Icons.h"

#include "ui/PBThemes.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

static void initializeIcons() {
    Q_INIT_RESOURCE(icons);
}

namespace Icons {

namespace {

QByteArray source(const QString& name) {
    [[maybe_unused]] static const bool ready = (initializeIcons(), true);
    QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class ThemedEngine final : public QIconEngine {
public:
    explicit ThemedEngine(const QString& name) : _name(name) {
        if (_name.endsWith(u"_s") || _name.endsWith(u"_n")) {
            _accented = _name.endsWith(u"_s");
            _name.chop(2);
        }
    }

    void
    paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
        const qreal ratio = painter->device()->devicePixelRatioF();
        painter->drawPixmap(rect, scaledPixmap(rect.size(), mode, state, ratio));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return scaledPixmap(size, mode, state, 1.0);
    }

    /// The size is in device pixels for a ratio of 1, in points otherwise.
    QPixmap
    scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal ratio) override {
        const PBThemes::Colors& colors = PBThemes::colors();
        QColor color = _accented || state == QIcon::On ? colors.accent : colors.icon;
        if (mode == QIcon::Disabled) color.setAlphaF(0.4F);
        if (mode == QIcon::Selected) color = Qt::white;
        return Icons::pixmap(_name, size, ratio, color);
    }

    bool isNull() override { return source(_name).isEmpty(); }
    QIconEngine* clone() const override { return std::make_unique<ThemedEngine>(*this).release(); }

private:
    QString _name;
    bool _accented = false;
};

} // namespace

QIcon named(const QString& name) {
    return QIcon(std::make_unique<ThemedEngine>(name).release());
}

QPixmap
pixmap(const QString& name, const QSize& size, qreal devicePixelRatio, const QColor& color) {
    const QString key = QStringLiteral("velmora:%1:%2x%3:%4:%5")
                            .arg(name)
                            .arg(size.width())
                            .arg(size.height())
                            .arg(devicePixelRatio)
                            .arg(color.name(QColor::HexArgb));
    QPixmap drawn;
    if (QPixmapCache::find(key, &drawn)) return drawn;
    QByteArray svg = source(name);
    if (svg.isEmpty()) return {};
    svg.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
    QSvgRenderer renderer(svg);
    drawn = QPixmap(size * devicePixelRatio);
    drawn.setDevicePixelRatio(devicePixelRatio);
    drawn.fill(Qt::transparent);
    QPainter painter(&drawn);
    painter.setOpacity(color.alphaF());
    renderer.render(&painter, QRectF(QPointF(), QSizeF(size)));
    painter.end();
    QPixmapCache::insert(key, drawn);
    return drawn;
}

} // namespace Icons
