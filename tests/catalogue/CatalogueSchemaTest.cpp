#include "catalogue/CatalogueSchema.h"

#include "support/Support.h"

#include <QCryptographicHash>

/// Rows that other runs wrote are read by these texts.
TEST(CatalogueSchemaTest, tablesAndIndexesKeepTheirOrderAndTheirText) {
    using namespace CatalogueSchema;
    const auto statement = [](const auto& made) { return createStatement(made); };
    const QStringList texts = support::listed(filesTables(), statement) +
                              support::listed(thumbnailTables(), statement) +
                              support::listed(filesIndexes(), statement);
    const QByteArray all = texts.join(u'\n').toUtf8();
    const auto hash = QCryptographicHash::hash(all, QCryptographicHash::Sha1).toHex();
    EXPECT_EQ(hash.toStdString(), "7af7d994dca326eac0ffd37b896a1d5a333c89da") << all.toStdString();
}
