#include "catalogue/marks/MarksLedger.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/IdsText.h"
#include "catalogue/marks/TagsText.h"
#include "core/Angles.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <chrono>
#include <cmath>

namespace marks {

namespace {

constexpr std::chrono::seconds longestWait(2);

QString rootsText(const RootPaths& roots) {
    QJsonObject object;
    for (auto root = roots.begin(); root != roots.end(); ++root)
        object.insert(QString::number(root.key()), root.value());
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

PBValue orNull(std::optional<int> value) {
    return value ? PBValue(*value) : PBValue(PBNull{});
}

PBValue orNull(qint64 id) {
    return id != 0 ? PBValue(id) : PBValue(PBNull{});
}

/// The angle at which `Tiff` as `t` says that the picture is shown.
const QString& fileAngle() {
    static const QString text = [] {
        constexpr int orientations = 8;
        QString cases = QStringLiteral("(case t.Orientation");
        for (int orientation = 1; orientation <= orientations; ++orientation) {
            const double angle = PBUtilities::orientationToAngle(orientation);
            if (angle != 0)
                cases +=
                    QStringLiteral(" when %1 then %2").arg(orientation).arg(std::lround(angle));
        }
        return cases + QStringLiteral(" else 0 end)");
    }();
    return text;
}

QString positive(const QString& angle) {
    return QStringLiteral("((cast(%1 as integer) % 360 + 360) % 360)").arg(angle);
}

/// The catalogue's marks in the ledger's form: `ImageFile` as `f`, `Tiff` as `t`.
QString catalogueMarks() {
    const QString angle = positive(QStringLiteral("ifnull(f.RotateAngle,0)"));
    return QStringLiteral(
               "min(max(ifnull(f.FileStars,0),0),5) as Stars,ifnull(f.FileFlag,0) <> 0 as Flag,"
               "case when ifnull(f.Tag,'') = '' then '[]' else "
               "(select json_group_array(g.Tag) from (select a.Tag from json_each("
               "case when json_valid('['||f.Tag||']') then '['||f.Tag||']' else '[]' end) j "
               "join Tags a on a.Id = j.value order by j.key) g) end as Tags,"
               "case when %1 <> %2 then %1 end as Rotation")
        .arg(angle, positive(fileAngle()));
}

/// What the catalogue knows of a photograph: as above, and `Folder` as `d`, `Exif` as `e`, the
/// roots as `r`.
const QString catalogueTrace = QStringLiteral(
    "cast(ifnull(r.value,'') as blob) as RootPath,"
    "cast(ifnull(d.RelativePath||'/','')||f.FileName as blob) as RelativePath,"
    "f.FileSize as Size,f.ModificationDate as ModificationDate,t.Orientation as Orientation,"
    "f.ImageWidth as Width,f.ImageHeight as Height,"
    "trim(ifnull(t.Make,'')||' '||ifnull(t.Model,'')) as Camera,"
    "e.DateTimeOriginal as TimeOfCapture");
const QString catalogueTables = QStringLiteral(
    "json_each(?) i join ImageFile f on f.Id = i.value left join Folder d on d.Id = f.FolderId "
    "left join json_each(?) r on r.key = cast(d.AliasId as text) "
    "left join Tiff t on t.FileId = f.Id left join Exif e on e.FileId = f.Id");

LedgerRow rowOf(const FMResultSet& row) {
    LedgerRow found;
    found.id = row.longLongIntForColumnIndex(0);
    found.fileId = row.longLongIntForColumnIndex(1);
    found.inheritedFrom = row.longLongIntForColumnIndex(2);
    found.isAway = row.intForColumnIndex(3) != 0;
    found.marks.stars = row.intForColumnIndex(4);
    found.marks.flag = row.intForColumnIndex(5) != 0;
    found.marks.tags = tagsOf(row.stringForColumnIndex(6));
    if (!row.columnIndexIsNull(7)) found.marks.rotation = row.intForColumnIndex(7);
    found.trace = {
        .rootPath = row.dataForColumnIndex(8),
        .relativePath = row.dataForColumnIndex(9),
        .size = row.columnIndexIsNull(10) ? -1 : row.longLongIntForColumnIndex(10),
        .modificationDate = row.doubleForColumnIndex(11),
        .identity =
            {static_cast<quint64>(row.longLongIntForColumnIndex(12)),
             row.longLongIntForColumnIndex(13)},
        .digest = row.dataForColumnIndex(14),
        .orientation = row.intForColumnIndex(15),
        .width = row.intForColumnIndex(16),
        .height = row.intForColumnIndex(17),
        .camera = row.stringForColumnIndex(18),
        .timeOfCapture = row.stringForColumnIndex(19)};
    if (found.fileId != 0 && !found.isAway && row.dataForColumnIndex(20) != found.trace.rootPath &&
        row.dataForColumnIndex(21) == found.trace.relativePath)
        found.formerRootPath = row.dataForColumnIndex(20);
    found.hasMoved = found.fileId != 0 && (row.dataForColumnIndex(20) != found.trace.rootPath ||
                                           row.dataForColumnIndex(21) != found.trace.relativePath);
    return found;
}

} // namespace

std::unique_ptr<FMDatabase>
MarksLedger::connect(const QString& filesPath, const QString& marksPath) {
    auto both = std::make_unique<FMDatabase>(filesPath);
    both->setShouldCacheStatements(true);
    both->setLongestWait(longestWait);
    const bool isOpen =
        both->open() &&
        both->executeUpdate(QStringLiteral("attach database ? as marks"), marksPath);
    return isOpen ? std::move(both) : nullptr;
}

bool MarksLedger::checkTables(FMDatabase& marks) {
    return marks.executeUpdate(
               QStringLiteral("create table if not exists Ledger (Version INTEGER NOT NULL,"
                              "CatalogueId INTEGER NOT NULL,EditCount INTEGER NOT NULL)")) &&
           marks.executeUpdate(QStringLiteral(
               "create table if not exists Marks (Id INTEGER PRIMARY KEY AUTOINCREMENT,"
               "FileId INTEGER,InheritedFrom INTEGER,Stars INTEGER NOT NULL,Flag INTEGER NOT NULL,"
               "Tags TEXT NOT NULL,Rotation INTEGER,RootPath BLOB,RelativePath BLOB,Size INTEGER,"
               "ModificationDate DOUBLE,Inode INTEGER,CreationTime INTEGER,Digest BLOB,"
               "Orientation INTEGER,Width INTEGER,Height INTEGER,Camera TEXT,"
               "TimeOfCapture TEXT)")) &&
           marks.executeUpdate(
               QStringLiteral("create unique index if not exists MarksOfFile on Marks (FileId)")) &&
           checkIndexes(marks) &&
           marks.executeUpdate(QStringLiteral(
               "insert into Ledger select 1,0,0 where not exists (select * from Ledger)"));
}

bool MarksLedger::checkIndexes(FMDatabase& marks) {
    return marks.executeUpdate(
        QStringLiteral("create index if not exists MarksOfSize on Marks (Size)"));
}

bool MarksLedger::changeCatalogue(std::span<const qint64> fileIds, const MarksChange& change) {
    const QString ids = catalogue::idsText(fileIds);
    const auto set = [&](const char* column, const PBValue& value) {
        return _db.executeUpdate(
            QStringLiteral("update ImageFile set %1 = ? where Id in (select value from "
                           "json_each(?)) and %1 is not ?")
                .arg(QLatin1StringView(column)),
            value, ids, value);
    };
    bool isDone = true;
    if (change.stars) isDone = set("FileStars", *change.stars);
    if (change.flag) isDone = isDone && set("FileFlag", *change.flag ? 1 : 0);
    if (change.tags) {
        // Each that is named counts as chosen once more, or is new.
        QStringList numbers;
        for (const QString& tag : *change.tags) {
            FMResultSet found = _db.executeQuery(
                QStringLiteral("select min(Id) from Tags where lower(Tag) = lower(?)"), tag);
            qint64 id = found.next() ? found.longLongIntForColumnIndex(0) : 0;
            found.close();
            if (id > 0) {
                isDone = isDone && _db.executeUpdate(
                                       QStringLiteral("update Tags set UseCount = UseCount+1 "
                                                      "where Id = ?"),
                                       id);
            } else {
                isDone = isDone &&
                         _db.executeUpdate(
                             QStringLiteral("insert into Tags (Tag,UseCount) values (?,1)"), tag);
                id = _db.lastInsertRowId();
            }
            if (!numbers.contains(QString::number(id))) numbers.append(QString::number(id));
        }
        isDone = isDone && set("Tag", numbers.join(u','));
    }
    if (change.rotation) {
        isDone =
            isDone && _db.executeUpdate(
                          QStringLiteral("update ImageFile set RotateAngle = ifnull(?,%1) from "
                                         "json_each(?) i left join Tiff t on t.FileId = i.value "
                                         "where ImageFile.Id = i.value")
                              .arg(fileAngle()),
                          orNull(*change.rotation), ids);
    }
    return isDone;
}

bool MarksLedger::turnInCatalogue(std::span<const qint64> fileIds, int degrees) {
    return _db.executeUpdate(
        QStringLiteral("update ImageFile set RotateAngle = (ifnull(RotateAngle,0)+?)%360 "
                       "where Id in (select value from json_each(?))"),
        degrees, catalogue::idsText(fileIds));
}

bool MarksLedger::takeFromCatalogue(std::span<const qint64> fileIds, const RootPaths& roots) {
    const QString ids = catalogue::idsText(fileIds);
    return _db.executeUpdate(
               QStringLiteral(
                   "insert into Marks (FileId,Stars,Flag,Tags,RootPath,RelativePath,Size,"
                   "ModificationDate,Orientation,Width,Height,Camera,TimeOfCapture) "
                   "select f.Id,0,0,'[]',%1 from %2 "
                   "where not exists (select * from Marks m where m.FileId = f.Id)")
                   .arg(catalogueTrace, catalogueTables),
               ids, rootsText(roots)) &&
           _db.executeUpdate(
               QStringLiteral(
                   "update Marks set Stars = s.Stars,Flag = s.Flag,Tags = s.Tags,"
                   "Rotation = s.Rotation,InheritedFrom = null from "
                   "(select f.Id as FileId,%1 from json_each(?) i "
                   "join ImageFile f on f.Id = i.value "
                   "left join Tiff t on t.FileId = f.Id) s where Marks.FileId = s.FileId")
                   .arg(catalogueMarks()),
               ids);
}

bool MarksLedger::takeChange(std::span<const qint64> fileIds, const MarksChange& change) {
    const PBValue stars = change.stars ? PBValue(*change.stars) : PBValue(PBNull{});
    const PBValue flag = change.flag ? PBValue(*change.flag ? 1 : 0) : PBValue(PBNull{});
    return _db.executeUpdate(
        QStringLiteral("update Marks set Stars = ifnull(?,Stars),Flag = ifnull(?,Flag),"
                       "InheritedFrom = null where FileId in (select value from json_each(?))"),
        stars, flag, catalogue::idsText(fileIds));
}

bool MarksLedger::giveToCatalogue(std::span<const qint64> fileIds) {
    const QString ids = catalogue::idsText(fileIds);
    return _db.executeUpdate(
               QStringLiteral(
                   "insert into Tags (Tag,UseCount) select min(j.value),1 from json_each(?) i "
                   "join Marks m on m.FileId = i.value join json_each(m.Tags) j where not exists "
                   "(select * from Tags a where lower(a.Tag) = lower(j.value)) "
                   "group by lower(j.value)"),
               ids) &&
           _db.executeUpdate(
               QStringLiteral(
                   "update ImageFile set FileStars = m.Stars,FileFlag = m.Flag,"
                   "Tag = (select group_concat(n.Id) from (select (select min(a.Id) from Tags a "
                   "where lower(a.Tag) = lower(j.value)) as Id from json_each(m.Tags) j "
                   "order by j.key) n),"
                   "RotateAngle = ifnull(m.Rotation,%1) from json_each(?) i "
                   "join Marks m on m.FileId = i.value left join Tiff t on t.FileId = i.value "
                   "where ImageFile.Id = i.value")
                   .arg(fileAngle()),
               ids);
}

bool MarksLedger::retrace(std::span<const qint64> fileIds, const RootPaths& roots) {
    const QString isSame =
        QStringLiteral("Marks.Size is s.Size and Marks.ModificationDate is s.ModificationDate");
    return _db.executeUpdate(
        QStringLiteral(
            "update Marks set RootPath = case when s.RootPath = x'' then Marks.RootPath "
            "else s.RootPath end,RelativePath = s.RelativePath,Size = s.Size,"
            "ModificationDate = s.ModificationDate,Orientation = s.Orientation,Width = s.Width,"
            "Height = s.Height,Camera = s.Camera,TimeOfCapture = s.TimeOfCapture,"
            "Digest = case when %1 then Marks.Digest end,"
            "Inode = case when %1 then Marks.Inode end,"
            "CreationTime = case when %1 then Marks.CreationTime end from "
            "(select f.Id as FileId,%2 from %3) s where Marks.FileId = s.FileId")
            .arg(isSame, catalogueTrace, catalogueTables),
        catalogue::idsText(fileIds), rootsText(roots));
}

std::optional<std::vector<MarksLedger::Held>> MarksLedger::held(std::span<const qint64> fileIds) {
    std::vector<Held> found;
    found.reserve(fileIds.size());
    FMResultSet row = _db.executeQuery(
        QStringLiteral("select f.Id,%1 from json_each(?) i join ImageFile f on f.Id = i.value "
                       "left join Tiff t on t.FileId = f.Id order by i.key")
            .arg(catalogueMarks()),
        catalogue::idsText(fileIds));
    while (row.next()) {
        Held& held = found.emplace_back();
        held.fileId = row.longLongIntForColumnIndex(0);
        held.marks.stars = row.intForColumnIndex(1);
        held.marks.flag = row.intForColumnIndex(2) != 0;
        held.marks.tags = tagsOf(row.stringForColumnIndex(3));
        if (!row.columnIndexIsNull(4)) held.marks.rotation = row.intForColumnIndex(4);
    }
    if (row.hadError()) return std::nullopt;
    return found;
}

std::optional<std::vector<qint64>> MarksLedger::markedFileIds() {
    std::vector<qint64> found;
    FMResultSet row = _db.executeQuery(
        QStringLiteral("select f.Id from ImageFile f left join Tiff t on t.FileId = f.Id "
                       "where f.FileStars > 0 or f.FileFlag <> 0 or ifnull(f.Tag,'') <> '' or "
                       "%1 <> %2 or exists (select * from Marks m where m.FileId = f.Id)")
            .arg(positive(QStringLiteral("ifnull(f.RotateAngle,0)")), positive(fileAngle())));
    while (row.next())
        found.push_back(row.longLongIntForColumnIndex(0));
    if (row.hadError()) return std::nullopt;
    return found;
}

std::optional<std::vector<LedgerRow>> MarksLedger::rows(const RootPaths& roots) {
    std::vector<LedgerRow> found;
    FMResultSet row = _db.executeQuery(
        QStringLiteral(
            "select m.Id,f.Id,m.InheritedFrom,f.Id is not null and r.key is null,m.Stars,m.Flag,"
            "m.Tags,m.Rotation,"
            "case when f.Id is null or r.key is null then m.RootPath else cast(r.value as blob) "
            "end,case when f.Id is null then m.RelativePath else "
            "cast(ifnull(d.RelativePath||'/','')||f.FileName as blob) end,"
            "m.Size,m.ModificationDate,m.Inode,m.CreationTime,m.Digest,m.Orientation,m.Width,"
            "m.Height,m.Camera,m.TimeOfCapture,m.RootPath,m.RelativePath from Marks m left join "
            "ImageFile f on "
            "f.Id = m.FileId left join Folder d on d.Id = f.FolderId "
            "left join json_each(?) r on r.key = cast(d.AliasId as text) order by m.Id"),
        rootsText(roots));
    while (row.next())
        found.push_back(rowOf(row));
    if (row.hadError()) return std::nullopt;
    return found;
}

bool MarksLedger::followRoot(const QByteArray& from, const QByteArray& to) {
    return _db.executeUpdate(
        QStringLiteral("update Marks set RootPath = ? where RootPath = ? and "
                       "not exists (select * from ImageFile f where f.Id = Marks.FileId)"),
        to, from);
}

qint64 MarksLedger::insert(const Trace& trace, const Marks& marks) {
    const bool isInserted = _db.executeUpdate(
        QStringLiteral("insert into Marks (Stars,Flag,Tags,Rotation,RootPath,RelativePath,Size,"
                       "ModificationDate,Digest) values (?,?,?,?,?,?,?,?,?)"),
        marks.stars, marks.flag ? 1 : 0, tagsText(marks.tags), orNull(marks.rotation),
        trace.rootPath, trace.relativePath,
        trace.size < 0 ? PBValue(PBNull{}) : PBValue(trace.size), trace.modificationDate,
        trace.digest.isEmpty() ? PBValue(PBNull{}) : PBValue(trace.digest));
    return isInserted ? _db.lastInsertRowId() : 0;
}

bool MarksLedger::setMarks(qint64 id, const Marks& marks) {
    return _db.executeUpdate(
        QStringLiteral("update Marks set Stars = ?,Flag = ?,Tags = ?,Rotation = ? where Id = ?"),
        marks.stars, marks.flag ? 1 : 0, tagsText(marks.tags), orNull(marks.rotation), id);
}

bool MarksLedger::remove(qint64 id) {
    return _db.executeUpdate(QStringLiteral("delete from Marks where Id = ?"), id);
}

bool MarksLedger::setFileId(qint64 id, qint64 fileId) {
    return _db.executeUpdate(
        QStringLiteral("update Marks set FileId = ? where Id = ?"), orNull(fileId), id);
}

bool MarksLedger::setInheritedFrom(qint64 id, qint64 inheritedFrom) {
    return _db.executeUpdate(
        QStringLiteral("update Marks set InheritedFrom = ? where Id = ?"), orNull(inheritedFrom),
        id);
}

bool MarksLedger::setContent(
    const LedgerRow& row, const platform::FileIdentity& identity, const QByteArray& digest) {
    return _db.executeUpdate(
        QStringLiteral("update Marks set Inode = ?,CreationTime = ?,Digest = ifnull(?,Digest) "
                       "where Id = ? and Size is ? and ModificationDate is ?"),
        static_cast<qint64>(identity.inode), identity.creationTime,
        digest.isEmpty() ? PBValue(PBNull{}) : PBValue(digest), row.id, row.trace.size,
        row.trace.modificationDate);
}

std::optional<std::vector<qint64>> MarksLedger::disinheritHeirs(qint64 id) {
    std::vector<qint64> fileIds;
    FMResultSet row = _db.executeQuery(
        QStringLiteral("select FileId from Marks where InheritedFrom = ? and FileId is not null"),
        id);
    while (row.next())
        fileIds.push_back(row.longLongIntForColumnIndex(0));
    if (row.hadError()) return std::nullopt;
    const bool isDone = _db.executeUpdate(
        QStringLiteral("update Marks set Stars = 0,Flag = 0,Tags = '[]',Rotation = null,"
                       "InheritedFrom = null where InheritedFrom = ?"),
        id);
    return isDone ? std::optional(std::move(fileIds)) : std::nullopt;
}

bool MarksLedger::isWithoutMarks(qint64 fileId) {
    FMResultSet row = _db.executeQuery(
        QStringLiteral("select Id from ImageFile where Id = ?1 and not exists "
                       "(select * from Marks where FileId = ?1)"),
        fileId);
    return row.next();
}

std::optional<std::vector<std::pair<qint64, Trace>>>
MarksLedger::traces(std::span<const qint64> fileIds, const RootPaths& roots) {
    std::vector<std::pair<qint64, Trace>> found;
    FMResultSet row = _db.executeQuery(
        QStringLiteral("select f.Id,%1 from %2 order by i.key")
            .arg(catalogueTrace, catalogueTables),
        catalogue::idsText(fileIds), rootsText(roots));
    while (row.next()) {
        found.emplace_back(
            row.longLongIntForColumnIndex(0), Trace{
                                                  .rootPath = row.dataForColumnIndex(1),
                                                  .relativePath = row.dataForColumnIndex(2),
                                                  .size = row.longLongIntForColumnIndex(3),
                                                  .modificationDate = row.doubleForColumnIndex(4),
                                                  .identity = {},
                                                  .digest = {},
                                                  .orientation = row.intForColumnIndex(5),
                                                  .width = row.intForColumnIndex(6),
                                                  .height = row.intForColumnIndex(7),
                                                  .camera = row.stringForColumnIndex(8),
                                                  .timeOfCapture = row.stringForColumnIndex(9)});
    }
    if (row.hadError()) return std::nullopt;
    return found;
}

std::optional<std::vector<LedgerRow>>
MarksLedger::rowsWithoutContent(FMDatabase& marks, qint64 afterId, int most) {
    std::vector<LedgerRow> found;
    FMResultSet row = marks.executeQuery(
        QStringLiteral("select Id,RootPath,RelativePath,Size,ModificationDate from Marks where "
                       "Id > ? and FileId is not null and Size is not null and "
                       "(Digest is null or Inode is null) order by Id limit ?"),
        afterId, most);
    while (row.next()) {
        LedgerRow& one = found.emplace_back();
        one.id = row.longLongIntForColumnIndex(0);
        one.trace.rootPath = row.dataForColumnIndex(1);
        one.trace.relativePath = row.dataForColumnIndex(2);
        one.trace.size = row.longLongIntForColumnIndex(3);
        one.trace.modificationDate = row.doubleForColumnIndex(4);
    }
    if (row.hadError()) return std::nullopt;
    return found;
}

namespace {

/// The absolute path of a row that the catalogue does not have.
const QString lostPath =
    QStringLiteral("cast(case when ifnull(RootPath,x'') = x'' then RelativePath "
                   "else RootPath||'/'||RelativePath end as blob)");

} // namespace

bool MarksLedger::setIdentity(qint64 fileId, const platform::FileIdentity& identity) {
    return _db.executeUpdate(
        QStringLiteral("update Marks set Inode = ?,CreationTime = ? where FileId = ?"),
        static_cast<qint64>(identity.inode), identity.creationTime, fileId);
}

bool MarksLedger::leaveCatalogue(
    qint64 fileId, const QByteArray& path, const platform::FileIdentity& identity) {
    return _db.executeUpdate(
        QStringLiteral("update Marks set FileId = null,RootPath = x'',RelativePath = ?,"
                       "Inode = ?,CreationTime = ? where FileId = ?"),
        path, static_cast<qint64>(identity.inode), identity.creationTime, fileId);
}

bool MarksLedger::moveLost(
    const QByteArray& path, const QByteArray& toPath, const platform::FileIdentity& identity) {
    return _db.executeUpdate(
        QStringLiteral("update Marks set RootPath = x'',RelativePath = ?,Inode = ?,"
                       "CreationTime = ? where FileId is null and %1 = ?")
            .arg(lostPath),
        toPath, static_cast<qint64>(identity.inode), identity.creationTime, path);
}

bool MarksLedger::removePhotograph(qint64 fileId) {
    return _db.executeUpdate(QStringLiteral("delete from Marks where FileId = ?"), fileId);
}

bool MarksLedger::removeLost(const QByteArray& path) {
    return _db.executeUpdate(
        QStringLiteral("delete from Marks where FileId is null and %1 = ?").arg(lostPath), path);
}

bool MarksLedger::countEdit() {
    FMResultSet row = _db.executeQuery(QStringLiteral("select EditCount from Ledger"));
    if (!row.next()) return false;
    // SQLite keeps 32 bits of it in the head of the other file.
    const qint64 count = (row.longLongIntForColumnIndex(0) + 1) & 0x7fffffff;
    row.close();
    return _db.executeUpdate(QStringLiteral("update Ledger set EditCount = ?"), count) &&
           _db.executeUpdate(QStringLiteral("pragma main.application_id = %1").arg(count));
}

} // namespace marks
