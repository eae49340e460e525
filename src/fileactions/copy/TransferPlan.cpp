#include "fileactions/copy/TransferPlan.h"

#include "platform/files/FileSystem.h"

#include <algorithm>

namespace fileactions {

std::int64_t TransferPlan::fileCount() const {
    return std::ranges::count_if(steps, [](const Step& step) { return step.folder.isEmpty(); });
}

void TransferPlan::addFile(const QByteArray& source, const QByteArray& folder, qint64 fileId) {
    addFile(
        {.source = source,
         .folder = kind == Kind::Duplicate ? platform::folderOfPath(source) : folder,
         .name = platform::nameOfPath(source),
         .content = std::nullopt,
         .fileId = fileId});
}

TransferPlan planTransfer(
    TransferPlan::Kind kind, const std::vector<QByteArray>& sources, const QByteArray& folder) {
    TransferPlan plan{.kind = kind, .steps = {}};
    for (const QByteArray& source : sources)
        plan.addFile(source, folder);
    return plan;
}

} // namespace fileactions
