#include "ui/Icons.h"

#include "platform/tasks/MainThread.h"
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

constexpr int smallGrid = 16;
constexpr int largeGrid = 24;

QString pathOf(const QString& name) {
    [[maybe_unused]] static const bool ready = (initializeIcons(), true);
    return QStringLiteral(":/icons/%1.svg").arg(name);
}

/// The drawing for a name: its own, or that of the symbol whose selected or resting form it is.
QString drawingOf(const QString& name) {
    const bool isForm = name.endsWith(u"_s") || name.endsWith(u"_n");
    return isForm && !QFile::exists(pathOf(name)) ? name.chopped(2) : name;
}

/// The drawing on the grid that fits the side, in points.
QByteArray source(const QString& drawing, int side) {
    const bool isLarge = side % smallGrid != 0 && (side % largeGrid == 0 || side > smallGrid + 4);
    QFile large(pathOf(QStringLiteral("24/") + drawing));
    if (isLarge && large.open(QIODevice::ReadOnly)) return large.readAll();
    QFile file(pathOf(drawing));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QColor selectedColor(QStringView name) {
    if (name.startsWith(u"flag_")) return PBThemes::colors().flag;
    if (name.startsWith(u"star_")) return PBThemes::colors().star;
    return PBThemes::colors().accent;
}

class ThemedEngine final : public QIconEngine {
public:
    explicit ThemedEngine(const QString& name)
        : _drawing(drawingOf(name)), _isSelectedForm(name.endsWith(u"_s")) {}

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
        QColor color = _isSelectedForm || state == QIcon::On ? selectedColor(_drawing)
                                                             : PBThemes::colors().icon;
        if (mode == QIcon::Disabled) color.setAlphaF(0.4F);
        if (mode == QIcon::Selected) color = Qt::white;
        return Icons::pixmap(_drawing, size, ratio, color);
    }

    bool isNull() override { return !QFile::exists(pathOf(_drawing)); }
    QIconEngine* clone() const override { return std::make_unique<ThemedEngine>(*this).release(); }

private:
    QString _drawing;
    bool _isSelectedForm;
};

} // namespace

QIcon named(const QString& name) {
    return QIcon(std::make_unique<ThemedEngine>(name).release());
}

QPixmap
pixmap(const QString& name, const QSize& size, qreal devicePixelRatio, const QColor& color) {
    platform::assertMainThread();
    // Such as in a pane that is closing.
    if (size.isEmpty()) return {};
    const QString key = QStringLiteral("velmora:%1:%2x%3:%4:%5")
                            .arg(name)
                            .arg(size.width())
                            .arg(size.height())
                            .arg(devicePixelRatio)
                            .arg(color.name(QColor::HexArgb));
    QPixmap drawn;
    if (QPixmapCache::find(key, &drawn)) return drawn;
    QByteArray svg = source(drawingOf(name), std::min(size.width(), size.height()));
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
