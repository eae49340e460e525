#include "fileactions/marks/MarksEdit.h"

#include "fileactions/marks/EditTransaction.h"

namespace fileactions {

MarksEdit MarksEdit::ofPhotographs(std::vector<qint64> fileIds, const marks::MarksChange& change) {
    return {
        .photographs = {{.fileIds = std::move(fileIds), .change = change, .ledgerIds = {}}},
        .paths = {}};
}

std::variant<PerformedEdit, QString>
storeEdit(FMDatabase& both, const marks::RootPaths& mountedRoots, const MarksEdit& edit) {
    EditTransaction transaction(both, mountedRoots);
    if (transaction.store(edit) && transaction.finish()) return std::move(transaction.performed());
    return transaction.reason();
}

} // namespace fileactions
