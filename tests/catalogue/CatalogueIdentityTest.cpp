#include "catalogue/CatalogueIdentity.h"

#include "catalogue/PBCatalogue.h"
#include "support/Rows.h"

using CatalogueIdentity::match;
using CatalogueIdentity::Match;

namespace {

struct Files : support::Database {
    explicit Files(int images) {
        EXPECT_TRUE(PBCatalogue(*this).checkTables_FilesDb());
        while (images-- > 0)
            PBCatalogue(*this).insertImageFileWithDictionary({{u"FolderId"_s, 1}});
    }
};
struct Thumbnails : support::Database {
    explicit Thumbnails(std::initializer_list<qint64> ids) {
        EXPECT_TRUE(PBCatalogue(*this).checkTables_Thumbnail());
        for (const qint64 id : ids)
            PBCatalogue(*this).insertThumbnailWithFileId(id, "t");
    }
    QString ids() { return support::rowsOf(*this, u"select FileId from Thumbnail"_s).join(u' '); }
};

TEST(CatalogueIdentityTest, thumbnailsAreOfTheCatalogueThatTheyWereBoundToAndOfNoOther) {
    Files files(2);
    Files other(2);
    Files fresh(0);
    FMDatabase closed{QString()};
    Thumbnails bound({0, 1, 2, 3});
    Thumbnails empty({});
    Thumbnails unbound({1});
    ASSERT_TRUE(files.executeUpdate(u"pragma query_only = on"_s));
    EXPECT_EQ(match(files, bound), Match::Unknown) << "neither is bound alone";
    ASSERT_TRUE(files.executeUpdate(u"pragma query_only = off"_s));
    EXPECT_EQ(match(files, bound), Match::Agree) << "both are of a time before";
    EXPECT_EQ(match(files, bound), Match::Agree);
    EXPECT_EQ(bound.ids(), u"1 2"_s) << "the others are of no image that ever was";
    EXPECT_EQ(match(other, bound), Match::Differ) << "a catalogue that was begun anew";
    EXPECT_EQ(match(other, empty), Match::Agree);
    EXPECT_EQ(match(files, empty), Match::Differ) << "two catalogues have two identities";
    EXPECT_EQ(match(files, unbound), Match::Differ) << "nobody knows whose";
    EXPECT_EQ(match(fresh, unbound), Match::Differ) << "no image has been given an id";
    EXPECT_EQ(match(closed, bound), Match::Unknown);
    EXPECT_EQ(match(files, closed), Match::Unknown);
    EXPECT_EQ(bound.ids() + unbound.ids(), u"1 21"_s) << "what becomes of them is the caller's";
}

} // namespace
