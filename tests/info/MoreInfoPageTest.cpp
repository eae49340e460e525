#include "group/CatalogueFixture.h"
#include "info/CategorySelector.h"
#include "info/PBMoreInfoContainerView.h"
#include "info/PBMoreInfoView.h"
#include "platform/program/UserDefaults.h"

#include <QAbstractButton>
#include <QToolButton>

namespace {

using support::entries;

struct MoreInfoPageTest : support::CatalogueFixture {
    MoreInfoPageTest() {
        page.resize(240, 300);
        page.show();
        EXPECT_TRUE(catalogue.insertTiffWithImageFileId(a->fileId(), entries("Make=Canon")));
        EXPECT_TRUE(catalogue.insertGPSWithImageFileId(
            a->fileId(), entries("Latitude=52.5 LatitudeRef=N Longitude=13.25 LongitudeRef=E")));
        EXPECT_TRUE(catalogue.insertTiffWithImageFileId(b->fileId(), entries("Make=Nikon")));
    }
    /// What is shown: the rows, or the text in their place; and the category that is kept.
    QString show(PBImageFileList items) {
        page.setSelection(std::move(items));
        page.updateInfos();
        return shown();
    }
    QString shown() {
        const PBMoreInfoView& view = page.infoView();
        QStringList texts = support::listed(
            view.rows(), [](const InfoRow& row) { return row.label + u'=' + row.shownValue(); });
        if (texts.isEmpty()) texts += view.emptyText();
        return texts.join(u' ') + u' ' +
               defaults.stringForKey(u"selectInfoType"_s).value_or(QString());
    }
    void click(int segment) { page.segments().findChildren<QAbstractButton*>()[segment]->click(); }

    const std::shared_ptr<PBImageFileItem> a = addImage();
    const std::shared_ptr<PBImageFileItem> b = addImage();
    const std::shared_ptr<PBImageFileItem> bare = addImage();
    QTemporaryDir folder;
    platform::UserDefaults defaults{folder.filePath(u"settings"_s)};
    PBMoreInfoContainerView page{database, defaults};
};

TEST_F(MoreInfoPageTest, itShowsWhatAllHaveAndKeepsTheChosenCategory) {
    EXPECT_EQ(show({}), u"No Selection "_s);
    EXPECT_EQ(show({bare}), u"No Metadata "_s);
    EXPECT_EQ(show({a}), u"Camera Maker=Canon {TIFF}"_s);
    click(1);
    EXPECT_EQ(shown(), u"Latitude=52° 30´ 0.0˝ N Longitude=13° 15´ 0.0˝ E {GPS}"_s);
    EXPECT_EQ(page.infoView().minimumHeight(), 3 * page.infoView().rowRect(0).height());
    // One of the two has no place: another category is chosen, and that is kept.
    EXPECT_EQ(show({a, b}), u"Camera Maker=Multiple values {TIFF}"_s);
    EXPECT_EQ(page.segments().findChildren<QAbstractButton*>().size(), 1);
    EXPECT_EQ(show({a, bare}), u"No Metadata {TIFF}"_s);
    EXPECT_TRUE(page.segments().isHidden());
}

TEST_F(MoreInfoPageTest, aPlaceLeadsToTheMap) {
    EXPECT_EQ(PBMoreInfoView::geoAddress({-12.25, 0.0000004}), u"geo:-12.250000,0.000000"_s);
    const auto* button = page.infoView().findChild<QToolButton*>();
    show({a});
    EXPECT_TRUE(button->isHidden());
    click(1);
    EXPECT_FALSE(button->isHidden());
    EXPECT_FALSE(button->toolTip().isEmpty()) << "the place, or why not";
    show({b});
    EXPECT_TRUE(button->isHidden());
}

} // namespace
