#include "ui/GroupIcons.h"

#include "ui/Icons.h"

QIcon Icons::ofGroup(const group::IconName& icon) {
    using Kind = group::IconName::Kind;
    switch (icon.kind) {
    case Kind::None:
        break;
    case Kind::Named:
        return named(icon.name);
    case Kind::Folder:
        return named(QStringLiteral("folder"));
    case Kind::FileExtension:
    case Kind::TypeIdentifier:
        return named(QStringLiteral("photograph"));
    }
    return {};
}
