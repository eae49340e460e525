#include "app/CatalogueHealth.h"

#include "FMDB/FMDatabase.h"
#include "app/CatalogueFiles.h"
#include "catalogue/CatalogueRepair.h"
#include "catalogue/DatabaseFile.h"
#include "catalogue/marks/MarksFile.h"
#include "platform/files/PathNames.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/program/StandardError.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"

#include <QFile>

#include <stop_token>

#include <pthread.h>
#include <sqlite3.h>

using platform::localizedFormat;
using platform::localizedString;

namespace {

const QString repairSuffix = QStringLiteral(".repair");

bool touch(const QString& path) {
    return QFile(path).open(QIODevice::WriteOnly);
}

} // namespace

CatalogueHealth::CatalogueHealth(Environment environment) : _environment(std::move(environment)) {
    platform::assertMainThread();
    _endedUncleanly = QFile::exists(markFile());
    touch(markFile());
}

CatalogueHealth::~CatalogueHealth() {
    stopLooking();
    *_isAlive = false;
}

QString CatalogueHealth::markFile() const {
    return platform::pathInFolder(_environment.folder, QStringLiteral("running"));
}

void CatalogueHealth::endedWell() {
    QFile::remove(markFile());
}

void CatalogueHealth::observe(FMDatabase& connection) {
    connection.setObserver(
        [this, file = connection.databasePath()](int code, const QString& message) {
            noteFailure(file, code, message);
        });
}

void CatalogueHealth::observeMarks(FMDatabase& connection) {
    connection.setObserver(
        [this, file = connection.databasePath()](int code, const QString& message) {
            if (code != SQLITE_CORRUPT && code != SQLITE_NOTADB) {
                noteFailure(file, code, message);
                return;
            }
            // SQLite does not say which of two files it is, and this one may still be locked here.
            postToMain([this, file, code, message] {
                const QString ledger =
                    platform::pathInFolder(_environment.folder, CatalogueFiles::marks);
                const bool isIt = marks::stateOfLedger(ledger) == marks::FileState::Damaged;
                noteFailure(isIt ? ledger : file, code, message);
            });
        });
}

void CatalogueHealth::noteFailure(const QString& file, int code, const QString& message) {
    if (code == SQLITE_OK) {
        {
            const platform::Lock lock(_mutex);
            _told.erase({file, SQLITE_BUSY});
        }
        postToMain([this] { _environment.withdraw(QStringLiteral("Locked")); });
        return;
    }
    {
        const platform::Lock lock(_mutex);
        if (!_told.try_emplace({file, code}, true).second) return;
    }
    Trouble trouble = Trouble::Unusable;
    switch (code) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        trouble = file.endsWith(CatalogueFiles::thumbnails) ? Trouble::ThumbnailsDamaged
                  : file.endsWith(CatalogueFiles::marks)    ? Trouble::MarksDamaged
                                                            : Trouble::Damaged;
        break;
    case SQLITE_FULL:
        trouble = Trouble::Full;
        break;
    case SQLITE_READONLY:
        trouble = Trouble::ReadOnly;
        break;
    case SQLITE_BUSY:
        trouble = Trouble::Locked;
        break;
    default:
        break;
    }
    postToMain([this, trouble, file, message] { tell(trouble, file, message); });
}

void CatalogueHealth::tell(Trouble trouble, const QString& file, const QString& message) {
    const auto tryAgain = [this, trouble, file] {
        {
            // It is told anew if it comes again.
            const platform::Lock lock(_mutex);
            std::erase_if(_told, [&file](const auto& entry) { return entry.first.first == file; });
        }
        _environment.withdraw(
            trouble == Trouble::Full ? QStringLiteral("Full") : QStringLiteral("Unusable"));
        _environment.tryAgain();
    };
    const auto repair = [this, file] {
        if (touch(file + repairSuffix)) _environment.restart();
    };
    const QString again = localizedString(u"NoticeTryAgain");
    switch (trouble) {
    case Trouble::Damaged:
        _environment.tell(
            {QStringLiteral("Damaged"), localizedString(u"NoticeDamaged"),
             localizedFormat(u"NoticeDamagedDetails", {file, message}),
             localizedString(u"NoticeRepair"), repair});
        break;
    case Trouble::ThumbnailsDamaged:
        _environment.tell(
            {QStringLiteral("ThumbnailsDamaged"), localizedString(u"NoticeThumbnailsDamaged"),
             localizedFormat(u"NoticeThumbnailsDamagedDetails", {file, message}),
             localizedString(u"NoticeMakeThumbnails"), repair});
        break;
    case Trouble::MarksDamaged:
        // A start replaces it.
        _environment.tell(
            {QStringLiteral("MarksDamaged"), localizedString(u"NoticeMarksDamaged"),
             localizedFormat(u"NoticeMarksDamagedDetails", {file, message}),
             localizedString(u"NoticeRestoreMarks"), _environment.restart});
        break;
    case Trouble::Full:
        _environment.tell(
            {QStringLiteral("Full"), localizedString(u"NoticeDiskFull"),
             localizedFormat(u"NoticeDiskFullDetails", {file}), again, tryAgain});
        break;
    case Trouble::ReadOnly:
        _environment.tell(
            {QStringLiteral("ReadOnly"),
             localizedString(u"NoticeReadOnly"),
             localizedFormat(u"NoticeReadOnlyDetails", {file}),
             {},
             {}});
        break;
    case Trouble::Locked:
        _environment.tell(
            {QStringLiteral("Locked"),
             localizedString(u"NoticeLocked"),
             localizedFormat(u"NoticeLockedDetails", {file}),
             {},
             {}});
        break;
    case Trouble::Unusable:
        _environment.tell(
            {QStringLiteral("Unusable"), localizedString(u"NoticeUnusable"),
             localizedFormat(u"NoticeUnusableDetails", {file, message}), again, tryAgain});
        break;
    }
}

void CatalogueHealth::watchLimitReached(const QString& limit) {
    postToMain([this, limit] {
        _environment.tell(
            {QStringLiteral("WatchLimit"),
             localizedString(u"NoticeWatchLimit"),
             localizedFormat(u"NoticeWatchLimitDetails", {limit}),
             {},
             {}});
    });
}

void CatalogueHealth::fileLeftOut(const QString& folder, const QString& name) {
    if (_isLeftOutTold.exchange(true)) return;
    platform::complain(
        QStringLiteral("names of files in %1 are not in UTF-8, such as %2; such files are left "
                       "out until they are renamed")
            .arg(folder, name));
    postToMain([this, folder, name] {
        _environment.tell(
            {QStringLiteral("UndecodableName"),
             localizedString(u"NoticeUndecodableName"),
             localizedFormat(u"NoticeUndecodableNameDetails", {folder, name}),
             {},
             {}});
    });
}

void CatalogueHealth::postToMain(std::function<void()> function) {
    auto* loop = platform::MainLoop::instance();
    if (!loop) return;
    loop->post(
        platform::MainLoop::Mode::Common, [isAlive = _isAlive, function = std::move(function)] {
            if (*isAlive) function();
        });
}

void CatalogueHealth::startLooking() {
    platform::assertMainThread();
    if (_looking.joinable()) return;
    const auto depth = _endedUncleanly ? CatalogueCheck::Depth::Whole : CatalogueCheck::Depth::Rows;
    _looking = std::jthread([this, depth](const std::stop_token& stop) {
        pthread_setname_np(pthread_self(), "check");
        look(stop, depth);
    });
}

void CatalogueHealth::stopLooking() {
    _looking = {};
}

void CatalogueHealth::look(const std::stop_token& stop, CatalogueCheck::Depth depth) {
    for (const QString& name : {CatalogueFiles::files, CatalogueFiles::thumbnails}) {
        // Thumbnails can be made again, and there is much to read of them.
        if (name == CatalogueFiles::thumbnails && depth == CatalogueCheck::Depth::Rows) continue;
        FMDatabase db(platform::pathInFolder(_environment.folder, name));
        if (!QFile::exists(db.databasePath()) || !db.open()) continue;
        const std::stop_callback interrupt(stop, [&db] { sqlite3_interrupt(db.sqliteHandle()); });
        const QString damage =
            CatalogueCheck::firstDamage(db, depth, [&stop] { return stop.stop_requested(); });
        if (!damage.isEmpty()) noteFailure(db.databasePath(), SQLITE_CORRUPT, damage);
    }
}

void CatalogueHealth::repairIfWanted(const QString& file) {
    const QString wanted = file + repairSuffix;
    if (!QFile::remove(wanted)) return;
    const QString repaired = file + QStringLiteral(".repaired");
    QFile::remove(repaired);
    const bool isThumbnails = file.endsWith(CatalogueFiles::thumbnails);
    const auto photographs =
        isThumbnails ? std::optional<qint64>(0) : CatalogueRepair::copyReadable(file, repaired);
    const QString aside = photographs ? DatabaseFile::moveAside(file) : QString();
    if (aside.isEmpty() || (!isThumbnails && !QFile::rename(repaired, file))) {
        QFile::remove(repaired);
        platform::complain(QStringLiteral("%1 can't be repaired; it is left as it is").arg(file));
        return;
    }
    if (isThumbnails) return;
    platform::complain(
        QStringLiteral("%1 photographs were saved from the damaged catalogue, which is kept as %2")
            .arg(*photographs)
            .arg(aside));
}
