#include "group/PublicationMailbox.h"

#include <utility>

namespace group {

bool PublicationMailbox::put(std::shared_ptr<GroupPublication> publication) {
    platform::Lock lock(_mutex);
    _isWaiting = true;
    if (_waiting.empty() || !_waiting.back()->isOf(publication->workGroupItemArray)) {
        _waiting.push_back(std::move(publication));
        return true;
    }
    publication->updateScrollCapture |= _waiting.back()->updateScrollCapture;
    std::swap(_waiting.back(), publication);
    lock.unlock();
    publication.reset(); // a tree: not within the lock
    return false;
}

std::shared_ptr<GroupPublication> PublicationMailbox::take() {
    const platform::Lock lock(_mutex);
    if (_waiting.empty()) return nullptr;
    auto first = std::move(_waiting.front());
    _waiting.pop_front();
    _isWaiting = !_waiting.empty();
    return first;
}

} // namespace group
