#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <span>
#include <utility>
#include <vector>

class FMDatabase;

namespace marks {

/// The list of tags, and who has one, in catalogue and ledger. Tags are found without regard
/// to case. On a connection to both files; false, or nothing: it can't be read or changed.
class TagRows {
public:
    explicit TagRows(FMDatabase& both) : _db(both) {}

    struct Row {
        qint64 id = 0; ///< 0: there is no such tag
        QString tag;   ///< as it is spelled in the list
    };
    /// The one in this very spelling, if there are several.
    [[nodiscard]] std::optional<Row> find(const QString& tag);
    /// Puts it into the list, unless it is there.
    bool ensure(const QString& tag);
    bool rename(qint64 tagId, const QString& name);
    bool remove(qint64 tagId);

    /// The photographs of the catalogue that have the tag.
    [[nodiscard]] std::optional<std::vector<qint64>> fileIdsWith(qint64 tagId);
    /// The rows of the ledger that have the tag and no photograph in the catalogue, with all their
    /// tags.
    [[nodiscard]] std::optional<std::vector<std::pair<qint64, QStringList>>>
    lookedForWith(const QString& tag);
    bool setTagsOfLedgerRow(qint64 ledgerId, const QStringList& tags);

    /// How many photographs of the catalogue have each tag: in the order of the users' language.
    struct Count {
        QString tag;
        qint64 photographs = 0;
    };
    /// `db` has the catalogue; the ledger is not needed.
    [[nodiscard]] static std::optional<std::vector<Count>> counts(FMDatabase& db);
    /// The texts of these tags, or of all, by their ids; ids without a tag are left out. Of the
    /// catalogue alone, too.
    [[nodiscard]] static std::optional<QHash<qint64, QString>>
    texts(FMDatabase& db, const std::optional<std::span<const qint64>>& tagIds = std::nullopt);

private:
    FMDatabase& _db;
};

} // namespace marks
