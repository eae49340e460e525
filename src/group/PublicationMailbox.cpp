#include "group/PublicationMailbox.h"

#include <utility>

namespace group {

namespace {

bool areOfOneTree(const GroupPublication& one, const GroupPublication& other) {
    return !one.workGroupItemArray.owner_before(other.workGroupItemArray) &&
           !other.workGroupItemArray.owner_before(one.workGroupItemArray);
}

} // namespace

bool PublicationMailbox::put(std::shared_ptr<GroupPublication> publication) {
    std::unique_lock lock(_mutex);
    if (_waiting.empty() || !areOfOneTree(*_waiting.back(), *publication)) {
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
    const std::lock_guard lock(_mutex);
    if (_waiting.empty()) return nullptr;
    auto first = std::move(_waiting.front());
    _waiting.pop_front();
    return first;
}

} // namespace group
