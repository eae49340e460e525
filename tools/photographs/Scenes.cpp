#include "photographs/Scenes.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace scenes {

namespace {

struct Palette {
    QColor zenith;
    QColor sky;
    QColor horizon;
    QColor sun;
    QColor near; // the silhouettes in front
};

constexpr double transparent = 0.0;

const Palette& paletteOf(Light light) {
    static const std::array<Palette, 4> palettes{{
        {QColor(0x5d7fb8), QColor(0xc9b8d8), QColor(0xffd9b8), QColor(0xfff0d6), QColor(0x1f2b3d)},
        {QColor(0x2f76c9), QColor(0x7fb6e8), QColor(0xdcedf7), QColor(0xffffff), QColor(0x21402f)},
        {QColor(0x3a4a8c), QColor(0xd9798a), QColor(0xffb765), QColor(0xffe9b0), QColor(0x241a33)},
        {QColor(0x101a3c), QColor(0x2c3c70), QColor(0x8a6a9a), QColor(0xf5e2d8), QColor(0x0b1122)},
    }};
    return palettes[static_cast<std::size_t>(light)];
}

QColor mixed(const QColor& one, const QColor& other, double share) {
    const auto part = [&](double a, double b) { return static_cast<float>(a + (b - a) * share); };
    return QColor::fromRgbF(
        part(one.redF(), other.redF()), part(one.greenF(), other.greenF()),
        part(one.blueF(), other.blueF()));
}

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

class Painter {
public:
    Painter(Light light, QSize size, std::uint32_t number)
        : image(size, QImage::Format_RGB32), painter(&image), palette(paletteOf(light)),
          width(size.width()), height(size.height()), _random(number * 2654435761U + 1) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
    }

    double random(double low, double high) {
        return std::uniform_real_distribution(low, high)(_random);
    }

    void sky(double horizon) {
        QLinearGradient gradient(0, 0, 0, horizon);
        gradient.setColorAt(0, palette.zenith);
        gradient.setColorAt(0.6, palette.sky);
        gradient.setColorAt(1, palette.horizon);
        painter.fillRect(QRectF(0, 0, width, height), gradient);
    }

    void sun(const QPointF& at, double radius) {
        QRadialGradient glow(at, radius * 9);
        glow.setColorAt(0, withAlpha(palette.sun, 0.75));
        glow.setColorAt(0.25, withAlpha(palette.sun, 0.25));
        glow.setColorAt(1, withAlpha(palette.sun, transparent));
        painter.fillRect(QRectF(0, 0, width, height), glow);
        painter.setBrush(palette.sun);
        painter.drawEllipse(at, radius, radius);
    }

    void clouds(double top, double bottom, int count) {
        for (int cloud = 0; cloud < count; ++cloud) {
            const QPointF centre(random(0, width), random(top, bottom));
            const double length = random(0.25, 0.6) * width;
            for (int puff = 0; puff < 40; ++puff) {
                const double along = random(-0.5, 0.5);
                const double radius = random(0.05, 0.16) * length * (1.1 - 1.6 * std::abs(along));
                const QPointF at = centre + QPointF(along, random(-0.03, 0.03)) * length;
                painter.save();
                painter.translate(at);
                painter.scale(2, 0.45);
                QRadialGradient soft(QPointF(), radius);
                soft.setColorAt(0, withAlpha(mixed(palette.horizon, Qt::white, 0.4), 0.09));
                soft.setColorAt(1, withAlpha(palette.horizon, transparent));
                painter.setBrush(soft);
                painter.drawEllipse(QPointF(), radius, radius);
                painter.restore();
            }
        }
    }

    void stars(int count, double bottom) {
        for (int star = 0; star < count; ++star) {
            const double radius = random(0.3, 1.3) * width / 900;
            painter.setBrush(withAlpha(Qt::white, random(0.3, 1)));
            painter.drawEllipse(QPointF(random(0, width), random(0, bottom)), radius, radius);
        }
    }

    /// The height of a line of hills at x: a few waves, each shorter and lower than the one before.
    double hills(double x, double phase, double waves, double roughness) const {
        double sum = 0;
        double share = 1;
        for (int octave = 0; octave < 7; ++octave) {
            sum += share *
                   std::sin(
                       x / width * waves * std::exp2(octave) * 6.283 + phase * (octave * 1.7 + 1));
            share *= roughness;
        }
        return sum;
    }

    void ridge(double base, double amplitude, double waves, double roughness, const QColor& color) {
        const double phase = random(0, 100);
        QPainterPath path(QPointF(0, height));
        double top = base;
        for (double x = 0; x <= width + 2; x += 2) {
            const double y = base - amplitude * hills(x, phase, waves, roughness);
            top = std::min(top, y);
            path.lineTo(x, y);
        }
        path.lineTo(width, height);
        QLinearGradient haze(0, top, 0, height);
        haze.setColorAt(0, color);
        haze.setColorAt(1, mixed(color, palette.horizon, 0.25));
        painter.fillPath(path, haze);
    }

    void ridges(double top, double bottom, int count, double roughness) {
        for (int layer = 0; layer < count; ++layer) {
            const double depth = (layer + 1.0) / count;
            ridge(
                top + (bottom - top) * depth * depth, height * 0.07 * (1.3 - depth * 0.6),
                random(0.5, 1.3), roughness,
                mixed(palette.horizon, palette.near, 0.2 + 0.8 * depth));
        }
    }

    void firs(double base, double size, int count, const QColor& color) {
        painter.setBrush(color);
        for (int fir = 0; fir < count; ++fir) {
            const double x = random(-0.02, 1.02) * width;
            const double y = base + random(0, size * 0.3);
            const double tall = size * random(0.6, 1.2);
            for (int tier = 0; tier < 5; ++tier) {
                const double upper = y - tall + tall * 0.17 * tier;
                const double half = tall * (0.07 + 0.035 * tier);
                painter.drawPolygon(QPolygonF(
                    {{x, upper}, {x + half, upper + tall * 0.3}, {x - half, upper + tall * 0.3}}));
            }
            painter.drawRect(QRectF(x - tall * 0.02, y - tall * 0.1, tall * 0.04, tall * 0.3));
        }
        painter.fillRect(QRectF(0, base + size * 0.1, width, height), color);
    }

    /// Turns all below the line into water that mirrors what is above it.
    void water(double line, double calm) {
        painter.end();
        const QImage above = image;
        const int first = static_cast<int>(line);
        for (int y = first; y < image.height(); ++y) {
            const double depth = static_cast<double>(y - first) / (height - first);
            const int source = std::clamp(2 * first - y, 0, first);
            const double reach = (2 + 26 * depth) * calm;
            auto* out = reinterpret_cast<QRgb*>(image.scanLine(y));
            const auto* in = reinterpret_cast<const QRgb*>(above.constScanLine(source));
            for (int x = 0; x < image.width(); ++x) {
                const double shift = reach * std::sin(y * 0.9 / (0.3 + depth) + x * 0.012) *
                                     std::sin(x * 0.031 + y * 0.4);
                const int from = std::clamp(static_cast<int>(x + shift), 0, image.width() - 1);
                out[x] = mixed(QColor(in[from]), palette.near, 0.18 + 0.35 * depth).rgb();
            }
        }
        painter.begin(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
    }

    void glints(double line, double x, int count) {
        for (int glint = 0; glint < count; ++glint) {
            const double depth = random(0, 1);
            const double length = (4 + 40 * depth) * random(0.4, 1) * width / 900;
            const QPointF at(
                x + random(-1, 1) * width * (0.03 + 0.12 * depth), line + depth * (height - line));
            painter.setBrush(withAlpha(palette.sun, random(0.1, 0.5)));
            painter.drawEllipse(at, length, std::max(0.7, length * 0.05));
        }
    }

    void buildings(double base, double tallest, double share, const QColor& color, bool isLit) {
        for (double x = -10; x < width;) {
            const double broad = random(0.03, 0.075) * width;
            const double tall = tallest * std::pow(random(0.25, 1), 1.4);
            const QRectF house(x, base - tall, broad, height);
            painter.fillRect(house, color);
            const double pane = width / 220;
            for (double y = house.top() + 2 * pane; isLit && y < base; y += 2.4 * pane)
                for (double at = x + pane; at < x + broad - 1.5 * pane; at += 2 * pane)
                    if (random(0, 1) < share)
                        painter.fillRect(
                            QRectF(at, y, pane, 1.2 * pane),
                            withAlpha(QColor(255, 214, 140), random(0.35, 0.95)));
            x += broad * random(0.95, 1.3);
        }
    }

    void bokeh(int count, const QColor& color, double largest) {
        for (int disc = 0; disc < count; ++disc) {
            const double radius = largest * random(0.25, 1) * width;
            QColor shade = color;
            shade.setHsvF(
                static_cast<float>(std::fmod(color.hueF() + random(-0.06, 0.06) + 1, 1)),
                color.saturationF(), static_cast<float>(random(0.6, 1)),
                static_cast<float>(random(0.08, 0.4)));
            painter.setBrush(shade);
            painter.drawEllipse(QPointF(random(0, width), random(0, height)), radius, radius);
        }
    }

    void flower(const QPointF& at, double radius, const QColor& color) {
        painter.save();
        painter.translate(at);
        painter.rotate(random(0, 60));
        for (int petal = 0; petal < 11; ++petal) {
            QLinearGradient shade(0, 0, radius, 0);
            shade.setColorAt(0, color.darker(150));
            shade.setColorAt(1, color.lighter(115));
            painter.setBrush(shade);
            painter.drawEllipse(QPointF(radius * 0.58, 0), radius * 0.44, radius * 0.17);
            painter.rotate(360.0 / 11);
        }
        QRadialGradient heart(QPointF(), radius * 0.26);
        heart.setColorAt(0, QColor(0xffe27a));
        heart.setColorAt(1, QColor(0xc98a1e));
        painter.setBrush(heart);
        painter.drawEllipse(QPointF(), radius * 0.26, radius * 0.26);
        painter.restore();
    }

    /// Darker corners and the grain of a sensor.
    QImage finished() {
        QRadialGradient corners(QPointF(width / 2, height / 2), std::hypot(width, height) / 2);
        corners.setColorAt(0.55, QColor(0, 0, 0, 0));
        corners.setColorAt(1, QColor(0, 0, 0, 90));
        painter.fillRect(QRectF(0, 0, width, height), corners);
        painter.end();
        for (int y = 0; y < image.height(); ++y) {
            auto* pixels = reinterpret_cast<QRgb*>(image.scanLine(y));
            for (int x = 0; x < image.width(); ++x) {
                const int grain = static_cast<int>(_random() % 9) - 4;
                const auto grained = [&](int part) { return std::clamp(part + grain, 0, 255); };
                pixels[x] = qRgb(
                    grained(qRed(pixels[x])), grained(qGreen(pixels[x])),
                    grained(qBlue(pixels[x])));
            }
        }
        return image;
    }

    QImage image;
    QPainter painter;
    Palette palette;
    double width;
    double height;

private:
    std::mt19937 _random;
};

void paintFlowers(Painter& scene) {
    const QColor meadow = mixed(QColor(0x2f5a2a), scene.palette.horizon, 0.15);
    QLinearGradient ground(0, 0, 0, scene.height);
    ground.setColorAt(0, mixed(meadow, scene.palette.horizon, 0.5));
    ground.setColorAt(1, meadow.darker(160));
    scene.painter.fillRect(QRectF(0, 0, scene.width, scene.height), ground);
    static const std::array<QColor, 5> colors{
        {QColor(0xe85d75), QColor(0xf2c14e), QColor(0xb079d6), QColor(0xf7f2ea), QColor(0xf08a4b)}};
    const QColor color = colors[static_cast<std::size_t>(scene.random(0, 4.99))];
    scene.bokeh(26, color, 0.09);
    scene.bokeh(16, QColor(0x9fd07a), 0.12);
    const double size = std::min(scene.width, scene.height);
    for (int flower = 0; flower < 3; ++flower) {
        const QPointF at(
            scene.width * scene.random(0.2, 0.8), scene.height * (0.3 + 0.17 * flower));
        scene.painter.setPen(QPen(QColor(0x3f6b33), size / 70));
        scene.painter.drawLine(at, at + QPointF(scene.random(-30, 30), scene.height));
        scene.painter.setPen(Qt::NoPen);
        scene.flower(at, size * scene.random(0.13, 0.24), color);
    }
}

} // namespace

QImage paint(Kind kind, Light light, QSize size, std::uint32_t number) {
    Painter scene(light, size, number);
    const double horizon = scene.height * scene.random(0.5, 0.66);
    const double sunX = scene.width * scene.random(0.15, 0.85);
    const QPointF sunAt(sunX, horizon * scene.random(0.35, 0.85));
    const double sunSize = scene.width * scene.random(0.018, 0.035);
    if (kind == Kind::Flowers) {
        paintFlowers(scene);
        return scene.finished();
    }
    scene.sky(horizon);
    if (light == Light::Dusk || kind == Kind::Night) scene.stars(500, horizon);
    scene.sun(sunAt, sunSize);
    if (kind != Kind::Night) scene.clouds(0, horizon * 0.7, 5);
    switch (kind) {
    case Kind::Mountains:
        scene.ridges(horizon * 0.85, scene.height * 0.95, 5, 0.5);
        break;
    case Kind::Lake:
        scene.ridges(horizon * 0.75, horizon, 3, 0.5);
        scene.water(horizon, 0.6);
        scene.glints(horizon, sunX, 60);
        break;
    case Kind::Forest:
        scene.ridges(horizon * 0.8, horizon * 1.1, 3, 0.42);
        scene.firs(
            scene.height * 0.82, scene.height * 0.2, 60,
            mixed(scene.palette.near, scene.palette.horizon, 0.22));
        scene.firs(scene.height * 0.95, scene.height * 0.36, 26, scene.palette.near);
        break;
    case Kind::Sea:
        scene.water(horizon, 1);
        scene.glints(horizon, sunX, 220);
        scene.ridge(
            scene.height * 1.06, scene.height * 0.09, 0.45, 0.4, scene.palette.near.darker(120));
        break;
    case Kind::Desert:
        scene.palette.near = QColor(0x7a3f1d);
        scene.ridges(horizon * 0.95, scene.height * 0.9, 5, 0.16);
        break;
    case Kind::City:
    case Kind::Night: {
        const bool isLit = light == Light::Dusk || light == Light::Evening || kind == Kind::Night;
        const QColor far = mixed(scene.palette.near, scene.palette.horizon, 0.45);
        scene.buildings(horizon, scene.height * 0.34, 0.2, far, isLit);
        scene.buildings(horizon, scene.height * 0.24, 0.45, scene.palette.near, isLit);
        scene.water(horizon * 1.12, 0.8);
        break;
    }
    case Kind::Flowers:
        break;
    }
    return scene.finished();
}

} // namespace scenes
