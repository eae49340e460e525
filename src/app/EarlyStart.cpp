#include "app/EarlyStart.h"

#include "app/WindowColours.h"
#include "codec/process/DecoderPool.h"
#include "codec/process/FrameReader.h"
#include "image/large/EarlyPhotograph.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

EarlyStart EarlyStart::begin(const QStringList& paths) {
    EarlyStart start;
    start.decoders = std::make_shared<codec::DecoderPool>(codec::DecoderPool::Settings());
    codec::setFrameReader(start.decoders);
    const QScreen* screen = QGuiApplication::primaryScreen();
    const auto file =
        std::ranges::find_if(paths, [](const QString& path) { return QFileInfo(path).isFile(); });
    if (!screen || file == paths.end()) return start;
    const QSize size = screen->size();
    EarlyPhotograph::shared().begin(
        *file, {.maxScreenSize = static_cast<double>(std::max(size.width(), size.height())),
                .backingScaleFactor = screen->devicePixelRatio(),
                .colorSpace = WindowColours::colorSpaceOf(platform::profileOfRootWindow())});
    return start;
}
