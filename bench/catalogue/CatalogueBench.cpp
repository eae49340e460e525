// Catalogue rows inserted through PBCatalogue against the same rows through SQLite's own interface
// with prepared statements that are kept and texts that are UTF-8 already; and the removal of a
// folder root.

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "catalogue/PhotoRows.h"
#include "catalogue/RootRemoval.h"
#include "support/Ratio.h"
#include "support/Require.h"

#include <QTemporaryDir>

#include <sqlite3.h>

#include <cstdlib>
#include <string>

namespace {

using bench::require;

constexpr int photoCount = 4000;
constexpr int photosPerTransaction = 200;
constexpr int rounds = 15;

/// An empty catalogue, in memory or in a new file.
class EmptyCatalogue {
public:
    explicit EmptyCatalogue(bool inMemory)
        : _db(inMemory ? QString() : _folder.filePath(QStringLiteral("files.db"))) {
        require(_db.open(), "open");
        require(PBCatalogue(_db).checkTables_FilesDb(), "making the tables");
    }
    FMDatabase& db() { return _db; }
    sqlite3* handle() { return _db.sqliteHandle(); }

private:
    QTemporaryDir _folder;
    FMDatabase _db;
};

/// The kept statements of the floor: one for each table and camera.
class BareInserts {
public:
    BareInserts(sqlite3* handle, const std::vector<bench::PhotoRows>& photos) : _handle(handle) {
        for (int camera = 0; camera < bench::cameraCount; ++camera) {
            for (std::size_t table = 0; table < bench::photoTables.size(); ++table) {
                const auto& row = photos[static_cast<std::size_t>(camera)].rows[table];
                const std::string sql = insertText(table, row.dictionary);
                sqlite3_stmt* statement = nullptr;
                sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr);
                require(statement != nullptr, "preparing");
                _statements.push_back(statement);
            }
        }
    }
    ~BareInserts() {
        for (sqlite3_stmt* statement : _statements)
            sqlite3_finalize(statement);
    }

    void insert(const bench::PhotoRows& photo) {
        std::int64_t fileId = 0;
        for (std::size_t table = 0; table < bench::photoTables.size(); ++table) {
            sqlite3_stmt* statement = _statements
                [static_cast<std::size_t>(photo.camera) * bench::photoTables.size() + table];
            int column = 0;
            if (table > 0) sqlite3_bind_int64(statement, ++column, fileId);
            for (const bench::PlainValue& value : photo.rows[table].plain)
                bind(statement, ++column, value);
            require(sqlite3_step(statement) == SQLITE_DONE, "bare insert");
            sqlite3_reset(statement);
            if (table == 0) fileId = sqlite3_last_insert_rowid(_handle);
        }
    }

private:
    static std::string insertText(std::size_t table, const PBDictionary& dictionary) {
        QStringList columns;
        if (table > 0) columns.append(QStringLiteral("FileId"));
        for (const auto& [key, value] : dictionary)
            columns.append(key);
        const QStringList places(columns.size(), QStringLiteral("?"));
        return QStringLiteral("insert into %1 (%2) values(%3)")
            .arg(
                QString::fromLatin1(bench::photoTables[table]), columns.join(u','),
                places.join(u','))
            .toStdString();
    }

    static void bind(sqlite3_stmt* statement, int column, const bench::PlainValue& value) {
        if (const auto* number = std::get_if<std::int64_t>(&value)) {
            sqlite3_bind_int64(statement, column, *number);
        } else if (const auto* real = std::get_if<double>(&value)) {
            sqlite3_bind_double(statement, column, *real);
        } else {
            const auto& text = std::get<std::string>(value);
            sqlite3_bind_text(
                statement, column, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
        }
    }

    sqlite3* _handle;
    std::vector<sqlite3_stmt*> _statements;
};

double insertBare(const std::vector<bench::PhotoRows>& photos, bool inMemory) {
    EmptyCatalogue catalogue(inMemory);
    return bench::millisecondsOf([&] {
        BareInserts inserts(catalogue.handle(), photos);
        for (int index = 0; index < photoCount; ++index) {
            if (index % photosPerTransaction == 0)
                sqlite3_exec(catalogue.handle(), "begin exclusive", nullptr, nullptr, nullptr);
            inserts.insert(photos[static_cast<std::size_t>(index)]);
            if ((index + 1) % photosPerTransaction == 0)
                sqlite3_exec(catalogue.handle(), "commit", nullptr, nullptr, nullptr);
        }
    });
}

double
insertThroughCatalogue(const std::vector<bench::PhotoRows>& photos, bool inMemory, bool cached) {
    EmptyCatalogue empty(inMemory);
    FMDatabase& db = empty.db();
    db.setShouldCacheStatements(cached);
    PBCatalogue catalogue(db);
    return bench::millisecondsOf([&] {
        for (int index = 0; index < photoCount; ++index) {
            if (index % photosPerTransaction == 0) require(db.beginTransaction(), "begin");
            const auto& rows = photos[static_cast<std::size_t>(index)].rows;
            const qint64 id = catalogue.insertImageFileWithDictionary(rows[0].dictionary);
            const bool inserted = id > 0 &&
                                  catalogue.insertExifWithImageFileId(id, rows[1].dictionary) &&
                                  catalogue.insertTiffWithImageFileId(id, rows[2].dictionary) &&
                                  catalogue.insertGPSWithImageFileId(id, rows[3].dictionary);
            require(inserted, "insert");
            if ((index + 1) % photosPerTransaction == 0) require(db.commit(), "commit");
        }
    });
}

bool measure(
    const char* name, const std::vector<bench::PhotoRows>& photos, bool inMemory, bool cached,
    std::optional<double> target) {
    return bench::printRatio(
        name, rounds, [&] { return insertBare(photos, inMemory); },
        [&] { return insertThroughCatalogue(photos, inMemory, cached); }, target);
}

} // namespace

int main() {
    const std::vector<bench::PhotoRows> photos = bench::makePhotoRows(photoCount);
    bool met = measure("4,000 photographs into a file, kept statements", photos, false, true, 2.0);
    met = measure("4,000 photographs into memory, kept statements", photos, true, true, 2.0) && met;
    measure("4,000 photographs into a file, prepared anew", photos, false, false, std::nullopt);
    met = bench::measureRootRemoval() && met;
    return met ? 0 : 1;
}
