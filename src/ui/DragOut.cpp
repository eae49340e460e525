#include "ui/DragOut.h"

#include "ui/PBThemes.h"

#include <QApplication>
#include <QPainter>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace {

void drawBadge(QPainter& painter, QSize size, qsizetype count) {
    QFont font = QApplication::font();
    font.setPixelSize(11);
    font.setBold(true);
    const QFontMetricsF metrics(font);
    const QString text = QString::number(count);
    const double height = std::ceil(metrics.height()) + 2;
    const double width = std::min(
        std::max(20.0, metrics.horizontalAdvance(text) + 4), std::max(1.0, size.width() - 6.0));
    const QRectF badge(size.width() - width - 5, 5, width, height);
    const double radius = std::rint(height / 2);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(255, 0, 0, 204));
    painter.setPen(QPen(Qt::white, 1));
    painter.drawRoundedRect(badge, radius, radius);
    painter.setFont(font);
    painter.drawText(badge, Qt::AlignCenter, text);
}

} // namespace

namespace DragOut {

std::unique_ptr<QMimeData> mimeData(const QStringList& paths) {
    auto data = std::make_unique<QMimeData>();
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls.append(QUrl::fromLocalFile(path));
    data->setUrls(urls);
    data->setText(paths.join(u'\n'));
    return data;
}

QImage
picture(const QImage& thumbnail, QSize size, double rotateAngle, qsizetype count, double ratio) {
    QImage image(size * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.save();
    if (thumbnail.isNull()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(PBThemes::colors().placeholder, 2, Qt::DashLine));
        painter.drawRoundedRect(QRectF(1, 1, size.width() - 2, size.height() - 2), 8, 8);
    } else {
        const double angle = std::fmod(rotateAngle, 360);
        QSizeF drawn = size;
        if (std::fmod(std::abs(angle), 180) == 90) drawn.transpose();
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.setOpacity(0.85);
        painter.translate(size.width() / 2.0, size.height() / 2.0);
        painter.rotate(-angle);
        painter.drawImage(
            QRectF(QPointF(-drawn.width() / 2, -drawn.height() / 2), drawn), thumbnail);
    }
    painter.restore();
    if (count > 1) drawBadge(painter, size, count);
    return image;
}

} // namespace DragOut
