#include "image/BuildThumbNotifier.h"

#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"

std::function<void(const std::shared_ptr<const PBBuildThumbOperation>&)>
BuildThumbNotifier::poster() {
    platform::assertMainThread();
    return
        [weak = std::weak_ptr(_self)](const std::shared_ptr<const PBBuildThumbOperation>& built) {
            using platform::MainLoop;
            MainLoop* loop = MainLoop::instance();
            if (!loop) return;
            loop->post(MainLoop::Mode::Common, [weak, built] {
                if (const auto self = weak.lock()) Q_EMIT(*self)->PBNotiName_BuildThumb(*built);
            });
        };
}
