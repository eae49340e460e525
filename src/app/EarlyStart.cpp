#include "app/EarlyStart.h"

#include "app/WindowColours.h"
#include "codec/process/DecoderPool.h"
#include "codec/process/FrameReader.h"
#include "image/large/EarlyPhotograph.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

void EarlyStart::makeDecoders(const QStringList& paths) {
    _decoders = std::make_shared<codec::DecoderPool>(codec::DecoderPool::Settings());
    codec::setFrameReader(_decoders);
    const auto file =
        std::ranges::find_if(paths, [](const QString& path) { return QFileInfo(path).isFile(); });
    if (file == paths.end()) return;
    _file = *file;
    _decoders->startOne();
}

void EarlyStart::beginToDecode() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen || _file.isEmpty()) return;
    const QSize size = screen->size();
    EarlyPhotograph::shared().begin(
        _file, {.maxScreenSize = static_cast<double>(std::max(size.width(), size.height())),
                .backingScaleFactor = screen->devicePixelRatio(),
                .colorSpace = WindowColours::colorSpaceOf(platform::profileOfRootWindow())});
}
