#include "info/InfoEdits.h"

#include <algorithm>
#include <vector>

namespace {

std::vector<qint64> sortedIds(const PBImageFileList& items) {
    std::vector<qint64> ids;
    ids.reserve(items.size());
    for (const auto& item : items)
        ids.push_back(item->fileId());
    std::ranges::sort(ids);
    return ids;
}

} // namespace

bool hasSamePhotographs(const PBImageFileList& one, const PBImageFileList& other) {
    if (one.size() != other.size()) return false;
    return one == other || sortedIds(one) == sortedIds(other);
}
