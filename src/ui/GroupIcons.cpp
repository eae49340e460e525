#include "ui/GroupIcons.h"

#include "platform/tasks/MainThread.h"
#include "ui/Icons.h"

#include <QHash>

namespace Icons {

namespace {

QString symbolOf(const group::IconName& icon) {
    switch (icon.kind) {
    case group::IconName::Kind::None:
        return {};
    case group::IconName::Kind::Named:
        return icon.name;
    case group::IconName::Kind::Folder:
        return QStringLiteral("folder");
    case group::IconName::Kind::FileExtension:
    case group::IconName::Kind::TypeIdentifier:
        return QStringLiteral("photograph");
    }
    return {};
}

} // namespace

const QIcon& ofGroup(const group::IconName& icon) {
    platform::assertMainThread();
    // Reading a symbol costs more than drawing the rest of a row.
    static QHash<QString, QIcon> icons;
    const QString symbol = symbolOf(icon);
    auto known = icons.find(symbol);
    if (known == icons.end())
        known = icons.insert(symbol, symbol.isEmpty() ? QIcon() : named(symbol));
    return *known;
}

} // namespace Icons
