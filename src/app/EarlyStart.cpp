#include "app/EarlyStart.h"

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
    if (!screen || paths.size() != 1 || !QFileInfo(paths.first()).isFile()) return start;
    const QSize size = screen->size();
    EarlyPhotograph::shared().begin(
        paths.first(), {.maxScreenSize = static_cast<double>(std::max(size.width(), size.height())),
                        .backingScaleFactor = screen->devicePixelRatio(),
                        .colorSpace = {}});
    return start;
}
