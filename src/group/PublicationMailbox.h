#pragma once

#include "group/GroupPublication.h"
#include "platform/tasks/Mutex.h"

#include <atomic>
#include <deque>
#include <memory>

namespace group {

/// Publications on their way to the main thread. One that comes while another of the same tree is
/// still waiting takes its place: a display that is slower than the scan shows the newest state,
/// and is not kept busy with those in between. Any thread.
class PublicationMailbox {
public:
    /// False when the publication took the place of a waiting one, so that nobody has to be woken.
    [[nodiscard]] bool put(std::shared_ptr<GroupPublication> publication);
    /// The one that has waited longest; nullptr when there is none.
    [[nodiscard]] std::shared_ptr<GroupPublication> take();
    /// The last publication is not on show yet: it waits here, or the display holds it back.
    /// Another one would only take its place.
    [[nodiscard]] bool isWaiting() const { return _isWaiting || _isHeldBack; }
    /// The display keeps the one that it took for the end of a motion, or no longer does.
    void setHeldBack(bool isHeldBack) { _isHeldBack = isHeldBack; }

private:
    std::atomic<bool> _isWaiting = false; // asked for every image of a scan
    std::atomic<bool> _isHeldBack = false;
    platform::Mutex _mutex;
    std::deque<std::shared_ptr<GroupPublication>> _waiting VELMORA_GUARDED_BY(_mutex);
};

} // namespace group
