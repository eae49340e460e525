#include "catalogue/marks/TagRows.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/IdsText.h"
#include "catalogue/marks/TagsText.h"

#include <algorithm>

namespace marks {

std::optional<TagRows::Row> TagRows::find(const QString& tag) {
    FMResultSet row = _db.executeQuery(
        QStringLiteral("select Id,Tag from Tags where lower(Tag) = lower(?1) "
                       "order by Tag <> ?1,Id limit 1"),
        tag);
    Row found;
    if (row.next()) found = {row.longLongIntForColumnIndex(0), row.stringForColumnIndex(1)};
    if (row.hadError()) return std::nullopt;
    row.close();
    const auto isBeyondAscii = [](QChar letter) { return letter.unicode() >= 128; };
    if (found.id != 0 || std::ranges::none_of(tag, isBeyondAscii)) return found;
    // SQLite knows the case of ASCII's letters only.
    FMResultSet all = _db.executeQuery(QStringLiteral("select Id,Tag from Tags order by Id"));
    while (found.id == 0 && all.next()) {
        const QString other = all.stringForColumnIndex(1);
        if (other.compare(tag, Qt::CaseInsensitive) == 0)
            found = {all.longLongIntForColumnIndex(0), other};
    }
    if (all.hadError()) return std::nullopt;
    return found;
}

bool TagRows::ensure(const QString& tag) {
    const auto row = find(tag);
    if (!row || row->id != 0) return row.has_value();
    return _db.executeUpdate(QStringLiteral("insert into Tags (Tag,UseCount) values (?,0)"), tag);
}

bool TagRows::rename(qint64 tagId, const QString& name) {
    return _db.executeUpdate(QStringLiteral("update Tags set Tag = ? where Id = ?"), name, tagId);
}

bool TagRows::remove(qint64 tagId) {
    return _db.executeUpdate(QStringLiteral("delete from Tags where Id = ?"), tagId);
}

std::optional<std::vector<qint64>> TagRows::fileIdsWith(qint64 tagId) {
    std::vector<qint64> found;
    FMResultSet row = _db.executeQuery(
        QStringLiteral("select Id from ImageFile where Tag is not null and "
                       "instr(','||replace(Tag,' ','')||',',','||?||',') > 0"),
        QString::number(tagId));
    while (row.next())
        found.push_back(row.longLongIntForColumnIndex(0));
    if (row.hadError()) return std::nullopt;
    return found;
}

std::optional<std::vector<std::pair<qint64, QStringList>>>
TagRows::lookedForWith(const QString& tag) {
    std::vector<std::pair<qint64, QStringList>> found;
    FMResultSet row = _db.executeQuery(
        QStringLiteral("select m.Id,m.Tags from Marks m where exists (select * from "
                       "json_each(m.Tags) j where lower(j.value) = lower(?)) and not exists "
                       "(select * from ImageFile f where f.Id = m.FileId)"),
        tag);
    while (row.next())
        found.emplace_back(row.longLongIntForColumnIndex(0), tagsOf(row.stringForColumnIndex(1)));
    if (row.hadError()) return std::nullopt;
    return found;
}

bool TagRows::setTagsOfLedgerRow(qint64 ledgerId, const QStringList& tags) {
    return _db.executeUpdate(
        QStringLiteral("update Marks set Tags = ? where Id = ?"), tagsText(tags), ledgerId);
}

std::optional<std::vector<TagRows::Count>> TagRows::counts(FMDatabase& db) {
    QHash<QString, qint64> photographs;
    FMResultSet lists = db.executeQuery(
        QStringLiteral("select Tag,count(*) from ImageFile where ifnull(Tag,'') <> '' "
                       "group by Tag"));
    while (lists.next()) {
        for (const QString& id : lists.stringForColumnIndex(0).split(u','))
            photographs[id.trimmed()] += lists.longLongIntForColumnIndex(1);
    }
    if (lists.hadError()) return std::nullopt;
    std::vector<Count> counts;
    FMResultSet tags = db.executeQuery(QStringLiteral("select Id,Tag from Tags"));
    while (tags.next()) {
        const QString id = QString::number(tags.longLongIntForColumnIndex(0));
        counts.push_back({tags.stringForColumnIndex(1), photographs.value(id)});
    }
    if (tags.hadError()) return std::nullopt;
    std::ranges::sort(counts, [](const Count& one, const Count& other) {
        return QString::localeAwareCompare(one.tag, other.tag) < 0;
    });
    return counts;
}

std::optional<QHash<qint64, QString>>
TagRows::texts(FMDatabase& db, const std::optional<std::span<const qint64>>& tagIds) {
    FMResultSet rows = tagIds ? db.executeQuery(
                                    QStringLiteral("select Id,Tag from Tags where Id in "
                                                   "(select value from json_each(?))"),
                                    catalogue::idsText(*tagIds))
                              : db.executeQuery(QStringLiteral("select Id,Tag from Tags"));
    QHash<qint64, QString> texts;
    while (rows.next())
        texts.insert(rows.longLongIntForColumnIndex(0), rows.stringForColumnIndex(1));
    if (rows.hadError()) return std::nullopt;
    return texts;
}

} // namespace marks
