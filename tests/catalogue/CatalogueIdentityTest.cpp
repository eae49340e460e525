#include "catalogue/CatalogueIdentity.h"

#include "catalogue/PBCatalogue.h"
#include "support/Rows.h"

using CatalogueIdentity::match;
using CatalogueIdentity::Match;

namespace {

struct CatalogueIdentityTest : ::testing::Test {
    struct Files : FMDatabase {
        Files() : FMDatabase(QString()) { EXPECT_TRUE(open() && catalogue.checkTables_FilesDb()); }
        qint64 addImage() { return catalogue.insertImageFileWithDictionary({{u"FolderId"_s, 1}}); }
        PBCatalogue catalogue{*this};
    };
    struct Thumbnails : FMDatabase {
        explicit Thumbnails(std::initializer_list<qint64> ids = {}) : FMDatabase(QString()) {
            EXPECT_TRUE(open() && PBCatalogue(*this).checkTables_Thumbnail());
            for (const qint64 id : ids)
                EXPECT_TRUE(PBCatalogue(*this).insertThumbnailWithFileId(id, "t"));
        }
        QString ids() {
            return support::rowsOf(*this, u"select FileId from Thumbnail"_s).join(u' ');
        }
    };
};

TEST_F(CatalogueIdentityTest, thumbnailsAreOfTheCatalogueThatTheyWereBoundToAndOfNoOther) {
    Files files;
    Files other;
    for (Files* each : {&files, &other})
        for (int image = 0; image < 3; ++image)
            each->addImage();
    Thumbnails bound({1, 2});
    EXPECT_EQ(match(files, bound), Match::Agree) << "both are of a time before";
    EXPECT_EQ(match(files, bound), Match::Agree);
    EXPECT_EQ(bound.ids(), u"1 2"_s);
    EXPECT_EQ(match(other, bound), Match::Differ) << "a catalogue that was begun anew";
    Thumbnails empty;
    EXPECT_EQ(match(other, empty), Match::Agree);
    EXPECT_EQ(match(files, empty), Match::Differ) << "two catalogues have two identities";
    Thumbnails unbound({1});
    EXPECT_EQ(match(files, unbound), Match::Differ) << "nobody knows whose";
    Files fresh;
    Thumbnails before({1});
    EXPECT_EQ(match(fresh, before), Match::Differ) << "no image has been given an id";
    EXPECT_EQ(bound.ids() + before.ids(), u"1 21"_s) << "left to the caller";
}

TEST_F(CatalogueIdentityTest, thumbnailsOfIdsThatWereNeverGivenGo) {
    Files files;
    files.addImage();
    EXPECT_TRUE(files.catalogue.removeImageFileWithFileId(files.addImage()));
    Thumbnails thumbnails({0, 1, 2, 3});
    EXPECT_EQ(match(files, thumbnails), Match::Agree);
    EXPECT_EQ(thumbnails.ids(), u"1 2"_s);
}

TEST_F(CatalogueIdentityTest, whatCannotBeReadOrWrittenIsLeftAsItIs) {
    Files files;
    files.addImage();
    Thumbnails thumbnails({1});
    FMDatabase closed{QString()};
    EXPECT_EQ(match(closed, thumbnails), Match::Unknown);
    EXPECT_EQ(match(files, closed), Match::Unknown);
    ASSERT_TRUE(files.executeUpdate(u"pragma query_only = on"_s));
    EXPECT_EQ(match(files, thumbnails), Match::Unknown);
    ASSERT_TRUE(files.executeUpdate(u"pragma query_only = off"_s));
    EXPECT_EQ(match(files, thumbnails), Match::Agree) << "none was bound alone";
}

} // namespace
