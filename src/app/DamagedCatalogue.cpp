#include "app/DamagedCatalogue.h"

#include "FMDB/FMDatabase.h"
#include "app/CatalogueBox.h"
#include "catalogue/DatabaseFile.h"
#include "catalogue/PBCatalogue.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/program/StandardError.h"

#include <QFile>
#include <QMessageBox>
#include <QPushButton>

using platform::localizedFormat;
using platform::localizedString;

QString DamagedCatalogue::reason(const QString& file) {
    if (!QFile::exists(file)) return {};
    FMDatabase database(file);
    if (!database.open()) return {};
    if (PBCatalogue(database).isTableExist(QStringLiteral("Version"))) return {};
    return database.isFileDamaged() ? database.lastErrorMessage() : QString();
}

DamagedCatalogue::Choice DamagedCatalogue::ask(const QString& file, const QString& reason) {
    QMessageBox box;
    setUpCatalogueBox(
        box, localizedString(u"CatalogueDamaged"),
        localizedFormat(u"CatalogueDamagedDetails", {file, reason}));
    const auto* anew =
        box.addButton(localizedString(u"CatalogueStartAnew"), QMessageBox::AcceptRole);
    const auto* without =
        box.addButton(localizedString(u"CatalogueGoWithout"), QMessageBox::DestructiveRole);
    box.exec();
    if (box.clickedButton() == anew) return Choice::StartAnew;
    return box.clickedButton() == without ? Choice::GoWithout : Choice::Quit;
}

bool DamagedCatalogue::settle(
    const QString& file,
    const std::function<Choice(const QString& file, const QString& reason)>& ask) {
    const QString why = reason(file);
    if (why.isEmpty()) return true;
    switch (ask(file, why)) {
    case Choice::Quit:
        return false;
    case Choice::GoWithout:
        break;
    case Choice::StartAnew:
        if (const QString aside = DatabaseFile::moveAside(file); !aside.isEmpty()) {
            platform::complain(
                QStringLiteral("the damaged catalogue file is kept as %1").arg(aside));
        } else {
            platform::complain(QStringLiteral("%1 can't be renamed").arg(file));
        }
        break;
    }
    return true;
}
