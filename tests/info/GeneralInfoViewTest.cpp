#include "group/CatalogueFixture.h"
#include "info/InfoPanel.h"
#include "info/PBGeneralInfoView.h"
#include "info/PBStarRatingCell.h"
#include "info/tags/PBTagTokenField.h"
#include "platform/program/UserDefaults.h"
#include "support/Mouse.h"
#include "ui/PBModalTextField.h"

#include <QAccessible>
#include <QClipboard>
#include <QTest>
#include <QToolButton>

namespace {

using support::sendMouse;

/// Writes down what the panel asks for.
struct NotedEdits final : InfoEdits {
    void toggleFlag(const PBImageFileList& items) override { note(items, u"flag"_s); }
    void setStar(const PBImageFileList& items, int star) override {
        note(items, u"%1 stars"_s.arg(star));
    }
    void changeTags(const PBImageFileList& items, const TagsChange& change) override {
        note(items, u'+' + change.added.join(u'+') + u'-' + change.removed.join(u'-'));
    }
    void rename(const std::shared_ptr<PBImageFileItem>& item, const QString& typedName) override {
        note({item}, typedName);
    }
    void note(const PBImageFileList& items, const QString& what) {
        const auto nameOf = [](const auto& item) { return item->fileName(); };
        noted.append(support::listed(items, nameOf).join(u',') + u": "_s + what);
    }
    QStringList noted;
};

struct GeneralInfoViewTest : support::CatalogueFixture {
    GeneralInfoViewTest() {
        panel.resize(240, 600);
        panel.show();
        panel.activateWindow();
    }
    void select(PBImageFileList items) { panel.setSelection({items, items}); }
    QString value(GeneralRow row) {
        return view.rows().empty() ? view.emptyText()
                                   : view.rows()[static_cast<std::size_t>(row)].shownValue();
    }
    template <typename Part>
    Part& part() {
        return *view.findChild<Part*>();
    }
    void type(const QString& text) { QTest::keyClicks(&part<PBTagTokenField>().editor(), text); }
    void clickName() {
        const QRect row = view.rowRect(static_cast<int>(GeneralRow::FileName));
        sendMouse(view, QEvent::MouseButtonPress, {40.0, row.bottom() - 8.0});
    }

    NotedEdits edits;
    support::KnownFolders folders{{{1, u"/photos"_s}}};
    QTemporaryDir folder;
    platform::UserDefaults defaults{folder.filePath(u"settings"_s)};
    InfoPanel panel{
        {.mainFileDb = database, .folderPaths = folders, .userDefaults = defaults, .edits = edits}};
    PBGeneralInfoView& view = panel.generalInfoView();
    const std::shared_ptr<PBImageFileItem> a = addImage({{u"FileName"_s, u"a.b.jpg"_s}});
    const std::shared_ptr<PBImageFileItem> b = addImage({{u"FileName"_s, u"b.jpg"_s}});
};

TEST_F(GeneralInfoViewTest, anEditBelongsToThosePhotographsThatItBeganWith) {
    select({a});
    type(u"sun"_s);
    select({b});
    EXPECT_EQ(edits.noted, QStringList{u"a.b.jpg: +sun-"_s});
    EXPECT_TRUE(part<PBTagTokenField>().tokens().isEmpty());
    clickName();
    ASSERT_EQ(part<PBModalTextField>().selectedText(), u"b"_s);
    part<PBModalTextField>().setText(u"new.jpg"_s);
    select({a, b});
    EXPECT_EQ(edits.noted.back(), u"b.jpg: new.jpg"_s);
    type(u"sea"_s);
    panel.hide();
    EXPECT_EQ(edits.noted.back(), u"a.b.jpg,b.jpg: +sea-"_s);
}

TEST_F(GeneralInfoViewTest, whatIsHalfTypedStaysWhileAScanBringsTheSamePhotographsAgain) {
    const auto again = PBImageFileItem::imageFileItemWithId(a->fileId(), 1, a->fileName(), 0, 0);
    select({a, b});
    type(u"su"_s);
    select({b, again});
    type(u"n"_s);
    EXPECT_TRUE(edits.noted.isEmpty());
    panel.setSelection({{a}, {a, b}}); // the other one is folded away
    EXPECT_EQ(edits.noted, QStringList{u"b.jpg,a.b.jpg: +sun-"_s});
    part<QToolButton>().click();
    EXPECT_EQ(edits.noted.back(), u"a.b.jpg,b.jpg: flag"_s) << "of a folded group, too";
    select({a});
    clickName();
    part<PBModalTextField>().setText(u"half"_s);
    select({again});
    EXPECT_EQ(edits.noted.size(), 2);
    part<PBModalTextField>().cancel();
    panel.renameAgain(a, u"once more"_s);
    EXPECT_EQ(view.findChildren<PBModalTextField*>().back()->text(), u"once more"_s);
}

TEST_F(GeneralInfoViewTest, aNameIsGivenOnlyWhereOneIsSelectedAndChanged) {
    select({a, b});
    clickName();
    EXPECT_FALSE(view.findChild<PBModalTextField*>());
    select({a});
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
        view.selectRow(static_cast<int>(GeneralRow::FileName));
        QTest::keyClick(&view, Qt::Key_F2);
        auto& field = part<PBModalTextField>();
        EXPECT_EQ(field.selectedText(), u"a.b"_s) << "without the extension";
        if (key == Qt::Key_Escape) field.setText(u"other"_s);
        QTest::keyClick(&field, key);
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    EXPECT_TRUE(edits.noted.isEmpty());
    // What is wrong with a name is said by whoever gives it; the field comes back as it was.
    panel.renameAgain(b, u"a/b.jpg"_s);
    EXPECT_FALSE(view.findChild<PBModalTextField*>()) << "another is shown";
    panel.renameAgain(a, u"a/b.jpg"_s);
    EXPECT_EQ(part<PBModalTextField>().text(), u"a/b.jpg"_s);
    QTest::keyClick(&part<PBModalTextField>(), Qt::Key_Return);
    EXPECT_EQ(edits.noted, QStringList(u"a.b.jpg: a/b.jpg"_s));
}

TEST_F(GeneralInfoViewTest, starsAreSetByClickDragAndKeys) {
    auto& stars = part<PBStarRatingCell>();
    const auto at = [](int star) {
        return QPointF(PBStarRatingCell::leftRoom + star * PBStarRatingCell::starSize - 4, 8);
    };
    const auto asked = [&] {
        return edits.noted.isEmpty() ? QString() : edits.noted.takeLast().section(u' ', 1);
    };
    const auto drag = [&](int from, int to) {
        sendMouse(stars, QEvent::MouseButtonPress, at(from));
        sendMouse(stars, QEvent::MouseMove, at(to));
        sendMouse(stars, QEvent::MouseButtonRelease, at(to));
        return asked();
    };
    select({a});
    EXPECT_EQ(drag(3, 3), u"3 stars"_s);
    EXPECT_EQ(stars.intValue(), 3) << "shown before it is stored";
    EXPECT_EQ(drag(3, 3), u"0 stars"_s) << "the same star twice";
    EXPECT_EQ(drag(1, 4), u"4 stars"_s);
    EXPECT_EQ(drag(2, 4), QString()) << "that is what they have";
    EXPECT_EQ(drag(4, 0), u"0 stars"_s) << "to the left of the first";
    const std::pair<Qt::Key, const char*> keys[] = {
        {Qt::Key_End, "5 stars"}, {Qt::Key_Right, ""}, {Qt::Key_Left, "4 stars"},
        {Qt::Key_2, "2 stars"},   {Qt::Key_9, ""},     {Qt::Key_Delete, "0 stars"}};
    for (const auto& [key, expected] : keys) {
        QTest::keyClick(&stars, key);
        EXPECT_EQ(asked(), QString::fromLatin1(expected)) << key;
    }
    // Mixed ones can be taken away, too.
    database.executeUpdate(u"update ImageFile set FileStars = 5 where Id = ?"_s, a->fileId());
    select({a, b});
    EXPECT_EQ(value(GeneralRow::FileStars), u"Multiple values"_s);
    EXPECT_EQ(stars.intValue(), 0);
    EXPECT_EQ(drag(0, 0), u"0 stars"_s);
}

TEST_F(GeneralInfoViewTest, aNewerSelectionStopsTheOlderOne) {
    // Far more than is read in one go, however fast.
    PBImageFileList many(100'000, a);
    many.back() = b;
    select(many);
    ASSERT_TRUE(panel.isGathering());
    EXPECT_EQ(value(GeneralRow::FileName), u"Being gathered…"_s);
    EXPECT_FALSE(part<PBTagTokenField>().editor().isEnabled());
    select({b});
    EXPECT_FALSE(panel.isGathering());
    EXPECT_EQ(value(GeneralRow::FileName), u"b.jpg"_s);
    // Nor is anything read while somebody writes.
    panel.setPaused(true);
    select(many);
    QApplication::processEvents();
    EXPECT_EQ(value(GeneralRow::FileName), u"Being gathered…"_s);
    select({a});
    EXPECT_EQ(value(GeneralRow::FileName), u"Being gathered…"_s);
    panel.setPaused(false);
    EXPECT_EQ(value(GeneralRow::FileName), u"a.b.jpg"_s);
    select(PBImageFileList(many.end() - 1000, many.end()));
    EXPECT_TRUE(support::spinUntil([&] { return !panel.isGathering(); }));
    EXPECT_EQ(value(GeneralRow::FileName), u"Multiple values"_s);
}

TEST_F(GeneralInfoViewTest, rowsAreSelectedCopiedAndRead) {
    select({a});
    view.selectRow(static_cast<int>(GeneralRow::FileLocation));
    EXPECT_TRUE(support::claimsShortcut(view, Qt::Key_Down));
    EXPECT_FALSE(support::claimsShortcut(view, Qt::Key_3)) << "ratings are the window's";
    QTest::keyClick(&view, Qt::Key_Down);
    QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"a.b.jpg"_s);
    QTest::keyClick(&view, Qt::Key_Up, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"Location: /photos\nName: a.b.jpg"_s);

    const int tagRow = static_cast<int>(GeneralRow::Tag);
    EXPECT_EQ(view.rowText(tagRow), u"Tags: No Tags"_s);
    database.executeUpdate(
        u"update ImageFile set Tag = ? where Id = ?"_s, support::addTag(database, u"sun, sea"_s),
        a->fileId());
    panel.updateInfo();
    EXPECT_EQ(view.rowText(tagRow), u"Tags: \"sun, sea\""_s);

    QAccessibleInterface* page = QAccessible::queryAccessibleInterface(&view);
    EXPECT_EQ(page->child(1)->text(QAccessible::Name), u"Name: a.b.jpg"_s);
    EXPECT_TRUE(page->child(1)->state().selected);
    QAccessibleInterface* stars = page->child(page->childCount() - 2);
    EXPECT_EQ(stars->object(), &part<PBStarRatingCell>());
    stars->valueInterface()->setCurrentValue(2);
    EXPECT_EQ(edits.noted, QStringList{u"a.b.jpg: 2 stars"_s});
}

} // namespace
