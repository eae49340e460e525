#include "scan/BareCatalogue.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "codec/metadata/ImageProperties.h"
#include "support/Ratio.h"

#include <QFile>
#include <QTemporaryDir>

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr qsizetype filesPerTransaction = 200;
constexpr std::array tables{"ImageFile", "Exif", "ExifAux", "Tiff", "IPTC", "GPS"};

void require(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "bench_scan: %s failed\n", what);
    std::exit(1);
}

void run(sqlite3* db, const QByteArray& sql) {
    require(
        sqlite3_exec(db, sql.constData(), nullptr, nullptr, nullptr) == SQLITE_OK, sql.constData());
}

struct CloseDatabase {
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

Database openBare(const QString& path) {
    sqlite3* db = nullptr;
    require(sqlite3_open(QFile::encodeName(path).constData(), &db) == SQLITE_OK, "opening");
    return Database(db);
}

Statement prepare(sqlite3* db, const QByteArray& sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, sql.constData(), -1, &statement, nullptr);
    require(statement != nullptr, sql.constData());
    return Statement(statement);
}

/// Copies the rows of one table in the order of their files, with the columns that are set there.
class TableCopy {
public:
    TableCopy(sqlite3* source, sqlite3* target, const char* table) {
        const Statement first = prepare(source, QByteArray("select * from ") + table + " limit 1");
        if (sqlite3_step(first.get()) != SQLITE_ROW) return;
        QByteArrayList columns;
        for (int column = 0; column < sqlite3_column_count(first.get()); ++column) {
            if (sqlite3_column_type(first.get(), column) != SQLITE_NULL)
                columns.append(sqlite3_column_name(first.get(), column));
        }
        const QByteArray names = columns.join(',');
        const QByteArrayList places(columns.size(), QByteArray("?"));
        _rows = prepare(source, "select " + names + " from " + table + " order by 1");
        _insert = prepare(
            target, QByteArray("insert into ") + table + " (" + names + ") values (" +
                        places.join(',') + ")");
    }

    /// Milliseconds of the insertion alone.
    double copyNext() {
        if (!_rows || sqlite3_step(_rows.get()) != SQLITE_ROW) return 0;
        return millisecondsOf([&] {
            for (int column = 0; column < sqlite3_column_count(_rows.get()); ++column)
                sqlite3_bind_value(
                    _insert.get(), column + 1, sqlite3_column_value(_rows.get(), column));
            require(sqlite3_step(_insert.get()) == SQLITE_DONE, "bare insert");
            sqlite3_reset(_insert.get());
        });
    }

private:
    Statement _rows;
    Statement _insert;
};

} // namespace

double statAndSelect(const QString& catalogue, const QStringList& files) {
    std::vector<QByteArray> paths;
    for (const QString& file : files)
        paths.push_back(QFile::encodeName(file));
    const Database db = openBare(catalogue);
    return millisecondsOf([&] {
        for (const QByteArray& path : paths) {
            struct statx status {};
            require(
                ::statx(AT_FDCWD, path.constData(), 0, STATX_BASIC_STATS, &status) == 0, "statx");
            keep(status.stx_size);
        }
        const Statement rows = prepare(
            db.get(),
            "select "
            "Id,FolderId,FileName,FileSize,ModificationDate,FileFlag,FileStars,Tag,RotateAngle,"
            "ColorModel,ImageDPI,ImageWidth,ImageHeight,UTIType,DateTimeOriginal from ImageFile "
            "left "
            "join Exif on FileId = Id");
        qsizetype count = 0;
        while (sqlite3_step(rows.get()) == SQLITE_ROW) {
            for (int column = 0; column < sqlite3_column_count(rows.get()); ++column)
                keep(sqlite3_column_text(rows.get(), column));
            ++count;
        }
        require(count == files.size(), "select of all rows");
    });
}

double readAndInsert(const QString& source, const QStringList& files) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("files.db"));
    {
        FMDatabase made(path);
        require(made.open() && PBCatalogue(made).checkTables_FilesDb(), "making the tables");
    }
    const Database from = openBare(source);
    const Database to = openBare(path);
    std::vector<TableCopy> copies;
    copies.reserve(std::size(tables));
    for (const char* table : tables)
        copies.emplace_back(from.get(), to.get(), table);
    double inserting = 0;
    double reading = 0;
    for (qsizetype begin = 0; begin < files.size(); begin += filesPerTransaction) {
        const qsizetype end = std::min(begin + filesPerTransaction, files.size());
        reading += millisecondsOf([&] {
            for (qsizetype index = begin; index < end; ++index) {
                const int file = ::open(QFile::encodeName(files[index]).constData(), O_RDONLY);
                require(file >= 0, "opening a picture");
                keep(codec::readImageProperties(file, {}, 0).has_value());
                ::close(file);
            }
        });
        inserting += millisecondsOf([&] { run(to.get(), "begin exclusive"); });
        for (qsizetype index = begin; index < end; ++index) {
            for (TableCopy& copy : copies)
                inserting += copy.copyNext();
        }
        inserting += millisecondsOf([&] { run(to.get(), "commit"); });
    }
    return reading + inserting;
}

void fillThumbnails(const QString& catalogue, const QString& thumbnails) {
    const Database db = openBare(thumbnails);
    const QByteArray path = QFile::encodeName(catalogue);
    run(db.get(), "attach '" + path + "' as Files");
    run(db.get(), "insert or ignore into Thumbnail (FileId,Data) select Id,zeroblob(900) from "
                  "Files.ImageFile");
}

} // namespace bench
