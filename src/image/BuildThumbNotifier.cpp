#include "image/BuildThumbNotifier.h"

#include "platform/MainLoop.h"

std::function<void(const std::shared_ptr<const PBBuildThumbOperation>&)>
BuildThumbNotifier::poster() {
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
