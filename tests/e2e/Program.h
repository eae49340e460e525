#pragma once

#include "e2e/Desktop.h"
#include "e2e/State.h"

#include <QSettings>

namespace e2e {

/// A test of the program itself, with a display, a profile and a folder of pictures of its own. It
/// is driven through `desktop` and looked at through `state()`; conditions are waited for, never
/// times:
///
///     startWithPhotographs();
///     select(u"IMG_0001.jpg"_s);
///     desktop.key(u"Return"_s);
///     EXPECT_TRUE(rests({{u"large.image"_s, u"IMG_0001.jpg"_s}}));
class ProgramTest : public testing::Test {
protected:
    using Condition = std::function<bool(const State& state)>;

    ProgramTest();
    void SetUp() override { ASSERT_TRUE(desktop.isRunning()) << "no display or window manager"; }
    void TearDown() override;

    /// The 92 photographs that tools/photographs paints, below `photos()`, in nine folders of five
    /// years.
    void paintPhotographs();
    [[nodiscard]] QString photos() const { return _folder.filePath(u"photos"_s); }
    [[nodiscard]] QString photo(const QString& below) const { return photos() + u'/' + below; }

    /// A setting of the profile, while the program doesn't run.
    void keep(const QString& key, const QVariant& value) const {
        QSettings(_profile + u"/Velmora.conf"_s, QSettings::IniFormat).setValue(key, value);
    }
    /// From the next start on the catalogue is the user's own, which desktops mean.
    void useOwnPlaces();
    /// Starts the program with `photos()` in the sidebar, and waits until the browser shows all
    /// thumbnails and has the keys.
    void start();
    void startWithPhotographs() {
        paintPhotographs();
        start();
    }
    /// Starts it with those arguments only, as it was left, and waits until it is at rest and has
    /// the keys.
    void startAgain(const QStringList& arguments = {});
    /// Ends the program by the user's keys and expects that it leaves in order, without a word on
    /// standard error. A test that doesn't, ends it as a desktop does, with the same expectation.
    void quit() {
        desktop.key(u"ctrl+q"_s);
        expectEnd();
    }

    /// Ends it without giving it a chance to leave anything in order.
    void crash() {
        _program.kill();
        EXPECT_TRUE(_program.waitForFinished());
        (void)_program.readAllStandardError();
    }
    [[nodiscard]] const QString& profile() const { return _profile; }

    /// What the program shows now; empty if it doesn't answer.
    [[nodiscard]] State state() const;
    /// Asks until the condition holds. `meanwhile` is called before each look. A failure tells the
    /// last state.
    [[nodiscard]] testing::AssertionResult
    waitFor(const Condition& condition, const std::function<void()>& meanwhile = {}) const;
    /// Waits until the values are these.
    [[nodiscard]] testing::AssertionResult becomes(const Values& values) const {
        return waitFor([&](const State& s) { return s.has(values); });
    }
    /// The same with nothing that moves.
    [[nodiscard]] testing::AssertionResult rests(const Values& values = {}) const {
        return waitFor([&](const State& s) { return s.isAtRest() && s.has(values); });
    }
    [[nodiscard]] testing::AssertionResult waitForSelection(const QString& names) const {
        return waitFor([&](const State& s) { return s.selected() == names; });
    }
    /// Waits until nothing moves and the browser has so many images.
    [[nodiscard]] testing::AssertionResult shows(qint64 count) const {
        return rests({{u"browser.items"_s, count}});
    }
    /// Waits until what has that class, name or text has the value.
    [[nodiscard]] testing::AssertionResult
    waitForControl(const QString& name, const QString& property, const QJsonValue& value) const;
    /// Waits until that photograph is shown large and sharp, as one of so many.
    [[nodiscard]] testing::AssertionResult showsLarge(const QString& name, qsizetype count) const {
        return waitFor([&](const State& s) {
            return s.isSharp() && s.has({{u"large.image"_s, name}, {u"large.count"_s, count}});
        });
    }
    [[nodiscard]] testing::AssertionResult waitForWindow(QSize size) const {
        return waitFor([&](const State& s) { return s.isAtRest() && s.window().size() == size; });
    }
    /// The image on show with that name, once it lies still.
    [[nodiscard]] Item item(const QString& name) const;
    /// The file of that name below `photos()`.
    [[nodiscard]] QString pathOf(const QString& name) const;

    /// Clicks the picture of an image on show.
    void click(const QString& name, const QString& modifier = {}) {
        desktop.click(item(name).picture.center(), modifier);
    }
    void select(const QString& name) {
        click(name);
        ASSERT_TRUE(waitForSelection(name));
    }
    /// Selects the first image on show and answers its name.
    QString selectFirst();
    void selectAll() {
        desktop.key(u"ctrl+a"_s);
        ASSERT_TRUE(becomes({{u"browser.selectCount"_s, 92}}));
    }
    /// Clicks a control, menu entry or row by its text, once it is there. `within` is the class or
    /// name of what it is in, where other places have the text, too.
    void clickPlace(const QString& text, const QString& within = {}) {
        clickOn([&](const State& s) { return s.place(text, within); }, text);
    }
    /// Clicks a button of the sheet that has the keys, once it is there.
    void press(const QString& button) {
        clickOn([&](const State& s) { return s.button(button); }, button);
    }
    /// Types the path into the chooser of files that has the keys, and takes it.
    void typePath(const QString& path);
    /// Goes through the menu bar and submenus to an entry.
    void choose(QStringList entries) {
        clickPlace(entries.takeFirst(), u"QMenuBar"_s);
        chooseInMenu(entries);
    }
    /// Goes through the menu that is open.
    void chooseInMenu(const QStringList& entries);
    /// Waits until a widget of that class has the keys, or any without one.
    void waitForFocus(const QString& widget = {});

    Desktop desktop;

private:
    void expectEnd();
    /// Clicks what the function finds, once it does.
    void clickOn(const std::function<QRect(const State&)>& find, const QString& name);

    QTemporaryDir _folder;
    QString _profile;
    bool _hasOwnPlaces = false;
    QProcess _program;
};

} // namespace e2e
