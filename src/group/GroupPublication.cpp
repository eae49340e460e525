#include "group/GroupPublication.h"

#include <algorithm>

namespace group {

std::shared_ptr<GroupPublication> makeGroupPublication(
    const std::shared_ptr<const PBGroupItemArray>& workGroupItemArray, bool updateScrollCapture) {
    auto publication = std::make_shared<GroupPublication>();
    publication->groupItemArray.reserve(workGroupItemArray->size());
    for (const auto& item : *workGroupItemArray)
        publication->groupItemArray.push_back(item->copyWithParent(nullptr));
    publication->workGroupItemArray = workGroupItemArray;
    publication->updateScrollCapture = updateScrollCapture;
    return publication;
}

void PushRhythm::itemWasAdded() {
    _count->setNumber(_count->number().toInteger() + 1);
}

bool PushRhythm::isDue(const PushLimits& limits, bool hasFocusOpenFile, double now) const {
    if (hasFocusOpenFile) return true;
    const auto count = static_cast<quint64>(_count->number().toInteger());
    if (count > limits.count) return true;
    return count != 0 && now - _time->number().toDouble() > limits.seconds;
}

void PushRhythm::wasPushed(double now) {
    _time->setNumber(now);
    _count->setNumber(0);
}

PBImageFileList removeFileItemInGroupArray(
    PBGroupItemArray& groupArray, const std::vector<PBGroupItemChain>& removeGroupArray,
    const std::function<bool()>& isCancelled) {
    PBImageFileList taken;
    const auto stops = [&] { return isCancelled && isCancelled(); };
    for (PBGroupItemChain chain : removeGroupArray) {
        if (stops()) break;
        if (chain.empty()) continue;
        const auto data = chain.front()->data();
        for (const auto& top : groupArray) {
            if (stops()) break;
            if (top->data() != data) continue;
            if (chain.size() >= 2) chain.erase(chain.begin());
            const auto removed = top->removeImageFilesWithRemoveGroupItemChain(chain);
            taken.insert(taken.end(), removed.begin(), removed.end());
            if (top->isEmpty()) std::erase(groupArray, top);
            break;
        }
    }
    return taken;
}

} // namespace group
