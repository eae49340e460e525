#include "app/CatalogueWait.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"
#include "app/CatalogueBox.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/program/StandardError.h"
#include "platform/tasks/MainThread.h"

#include <QFile>
#include <QMessageBox>
#include <QTimer>

#include <sqlite3.h>

using platform::localizedFormat;
using platform::localizedString;
using namespace std::chrono_literals;

namespace {

/// A write of another program takes no longer as a rule, and a window that comes and goes would
/// only startle.
constexpr auto unnoticed = 400ms;
constexpr auto glance = 1ms;
constexpr auto betweenLooks = 200ms;

} // namespace

bool CatalogueWait::isHeld(const QString& file, std::chrono::milliseconds patience) {
    if (!QFile::exists(file)) return false;
    FMDatabase database(file);
    database.setLongestWait(patience);
    if (!database.open()) return false;
    const FMTransaction attempt(database, FMDatabase::Others::Read);
    const int code = database.lastErrorCode();
    return code == SQLITE_BUSY || code == SQLITE_LOCKED;
}

bool CatalogueWait::waitInWindow(const QString& file, const std::function<bool()>& isFree) {
    platform::assertMainThread();
    QMessageBox box;
    setUpCatalogueBox(
        box, localizedString(u"CatalogueHeld"), localizedFormat(u"CatalogueHeldDetails", {file}));
    bool isSettled = false;
    QTimer look;
    look.setInterval(betweenLooks);
    QObject::connect(&look, &QTimer::timeout, &box, [&] {
        isSettled = isFree();
        if (isSettled) box.done(0);
    });
    look.start();
    box.exec();
    return isSettled;
}

bool CatalogueWait::settle(const QString& file) {
    if (!isHeld(file, unnoticed)) return true;
    platform::complain(
        QStringLiteral("the catalogue file %1 is locked by another program; Velmora waits for it")
            .arg(file));
    return waitInWindow(file, [&] { return !isHeld(file, glance); });
}
