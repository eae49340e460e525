// transitionsheet FILE.png [FROM TO]: the twelve transitions of the slideshow at one moment,
// between two pictures, or painted ones, for the eyes of whoever changes them.
#include "photographs/Scenes.h"
#include "viewer/slideshow/transitions/OffscreenOpenGL.h"
#include "viewer/slideshow/transitions/PlainPicture.h"
#include "viewer/slideshow/transitions/RasterTransitions.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QPainter>

#include <cstdio>
#include <functional>

namespace {

constexpr QSize viewSize(1920, 1200);
constexpr QSize cellSize(480, 300);
constexpr int columns = 3;

const char* const names[transitionStyleCount] = {
    "0 fade",     "1 move in", "2 push", "3 reveal",    "4 copy machine", "5 disintegrate",
    "6 dissolve", "7 flash",   "8 mod",  "9 page curl", "10 ripple",      "11 swipe"};

using Painter = std::function<QImage(const TransitionFrame&)>;

QImage drawSheet(const QImage& from, const QImage& to, double progress, const Painter& paint) {
    QImage sheet(
        cellSize.width() * columns, cellSize.height() * (transitionStyleCount / columns),
        QImage::Format_RGB32);
    QPainter painter(&sheet);
    for (int number = 0; number < transitionStyleCount; ++number) {
        const auto style = static_cast<TransitionStyle>(number);
        const QRect cell(
            QPoint(number % columns * cellSize.width(), number / columns * cellSize.height()),
            cellSize);
        const QImage frame = paint({style, progress, from, to, makeTransitionMap(style, viewSize)});
        painter.drawImage(
            cell.topLeft(),
            frame.scaled(cellSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        const QRect label(cell.left(), cell.bottom() - 21, 130, 22);
        painter.fillRect(label, QColor(0, 0, 0, 170));
        painter.setPen(Qt::white);
        painter.drawText(label, Qt::AlignCenter, QString::fromLatin1(names[number]));
    }
    return sheet;
}

} // namespace

int main(int argc, char** argv) {
    const bool hasDisplay =
        !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    if (!hasDisplay) qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Draws the transitions of the slideshow, side by side."));
    parser.addHelpOption();
    const QCommandLineOption openGL(
        QStringLiteral("opengl"), QStringLiteral("By shaders; else without them."));
    const QCommandLineOption moment(
        QStringLiteral("progress"), QStringLiteral("0 to 1; 0.5 without it."),
        QStringLiteral("PART"), QStringLiteral("0.5"));
    parser.addOptions({openGL, moment});
    parser.addPositionalArgument(QStringLiteral("FILE.png"), QStringLiteral("The sheet."));
    parser.addPositionalArgument(
        QStringLiteral("FROM TO"), QStringLiteral("Pictures; painted ones without them."),
        QStringLiteral("[FROM TO]"));
    parser.process(application);
    const QStringList words = parser.positionalArguments();
    bool isPart = false;
    const double progress = parser.value(moment).toDouble(&isPart);
    isPart = isPart && progress >= 0 && progress <= 1;
    if ((words.size() != 1 && words.size() != 3) || !isPart) parser.showHelp(2);

    const QImage first =
        words.size() == 3 ? QImage(words[1])
                          : scenes::paint(scenes::Kind::Mountains, scenes::Light::Day, viewSize, 3);
    const QImage second =
        words.size() == 3 ? QImage(words[2])
                          : scenes::paint(scenes::Kind::Sea, scenes::Light::Evening, viewSize, 5);
    const auto shaders = parser.isSet(openGL) ? OffscreenOpenGL::make() : nullptr;
    if (parser.isSet(openGL) && !shaders) {
        std::fprintf(stderr, "transitionsheet: OpenGL can't be used here\n");
        return 1;
    }
    const QImage sheet = drawSheet(
        plainPicture(first, 0, viewSize), plainPicture(second, 0, viewSize), progress,
        [&shaders](const TransitionFrame& frame) {
            return shaders ? shaders->paintedFrame(frame) : RasterTransitions::paintedFrame(frame);
        });
    if (sheet.save(words[0])) return 0;
    std::fprintf(stderr, "transitionsheet: %s can't be written\n", qPrintable(words[0]));
    return 1;
}
