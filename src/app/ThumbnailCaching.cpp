#include "app/ThumbnailCaching.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBClearThumbOperation.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/OperationQueue.h"

#include <QFileInfo>

#include <memory>
#include <utility>

using platform::MainLoop;

ThumbnailCache makeThumbnailCache(const ThumbnailCachingEnvironment& environment) {
    const QString path = environment.buildThumbDb.databasePath();
    // Expires with the cache; looked at on the main thread only.
    const auto alive = std::make_shared<bool>(true);
    return {
        .byteCount =
            [path] {
                return QFileInfo(path).size() + QFileInfo(path + QStringLiteral("-wal")).size();
            },
        .clear =
            [environment, alive](std::function<void(bool isCleared)> done) {
                const auto ended = [buildAnew = environment.buildAnew, link = std::weak_ptr(alive),
                                    done = std::move(done)](bool isCleared) {
                    MainLoop* loop = MainLoop::instance();
                    if (!loop) return;
                    loop->post(MainLoop::Mode::Default, [buildAnew, link, done, isCleared] {
                        if (link.expired()) return;
                        if (isCleared) buildAnew();
                        done(isCleared);
                    });
                };
                environment.buildQueue.addOperation(
                    std::make_shared<PBClearThumbOperation>(environment.buildThumbDb, ended));
            }};
}
