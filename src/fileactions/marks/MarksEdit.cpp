#include "fileactions/marks/MarksEdit.h"

#include "fileactions/marks/EditTransaction.h"

namespace fileactions {

QString keyOf(const marks::MarksChange& change) {
    constexpr QChar end(1);
    QString key;
    key += (change.stars ? QString::number(*change.stars) : QString()) + end;
    key += (change.flag ? QString::number(static_cast<int>(*change.flag)) : QString()) + end;
    if (change.rotation)
        key += *change.rotation ? QString::number(**change.rotation) : QStringLiteral("file");
    key += end;
    if (change.tags)
        for (const QString& tag : *change.tags)
            key += QString::number(tag.size()) + u':' + tag;
    else
        key += end;
    return key;
}

std::variant<PerformedEdit, QString>
storeEdit(FMDatabase& both, const marks::RootPaths& mountedRoots, const MarksEdit& edit) {
    EditTransaction transaction(both, mountedRoots);
    if (transaction.store(edit) && transaction.finish()) return std::move(transaction.performed());
    return transaction.reason();
}

} // namespace fileactions
