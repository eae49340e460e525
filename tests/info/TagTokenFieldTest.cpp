#include "info/tags/PBTagTokenField.h"
#include "support/Mouse.h"

#include <QClipboard>
#include <QLineEdit>
#include <QTest>

namespace {

/// "+added -removed"
QString told(const TagsChange& change) {
    QStringList words;
    for (const QString& tag : change.added)
        words.append(u'+' + tag);
    for (const QString& tag : change.removed)
        words.append(u'-' + tag);
    return words.join(u' ');
}

const QString longTag(10000, u'x');
const QString hebrew = QString::fromUtf8("\u05e9\u05dc\u05d5\u05dd \u202eabc");

TEST(TagTokensTest, listsAreReadAsTheyAreWritten) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"a, b ,c", "a| b ", "c"},
        {"a\nb\r\n", "a|b", ""},
        {",, ,", "", ""},
        {R"("a, b", c)", R"("a, b")", " c"},
        {R"("a, b)", "", R"("a, b)"},
        {R"(5" x 7", b)", R"(5" x 7")", " b"},
        {R"("say ""a, b""", c)", R"("say ""a, b""")", " c"}};
    for (const auto& [text, complete, rest] : cases) {
        const auto parts = TagTokens::partsOf(QString::fromLatin1(text));
        EXPECT_EQ(parts.complete.join(u'|'), QString::fromLatin1(complete)) << text;
        EXPECT_EQ(parts.rest, QString::fromLatin1(rest)) << text;
    }
    for (const QString& tag :
         {u"a, b"_s, u"\"a\""_s, u"5\" x 7\""_s, u"\""_s, u"say \"a, b\""_s, longTag, hebrew,
          u"'"_s}) {
        const auto parts = TagTokens::partsOf(TagTokens::written(tag) + u',');
        ASSERT_EQ(parts.complete.size(), 1) << tag.left(50).toStdString();
        EXPECT_EQ(TagTokens::unquoted(parts.complete.front()), tag);
    }
    EXPECT_EQ(TagTokens::cleaned(u" a\nb\u2028c "_s), u"a b c"_s);
}

TEST(TagTokensTest, aChangeIsWhatEachPhotographGetsAndLoses) {
    const MergedTags before{{u"Lisbon"_s, u"sea, sun"_s}, {u"night"_s, u"école"_s, u"École"_s}};
    using Edit = std::function<void(TagTokens&)>;
    const std::tuple<const char*, Edit, const char*> cases[] = {
        {"added", [](TagTokens& tokens) { tokens.add(u"x"_s); }, "+x"},
        {"of all again", [](TagTokens& tokens) { tokens.add(u"LISBON"_s); }, ""},
        {"blank", [](TagTokens& tokens) { tokens.add(u" \n"_s); }, ""},
        {"of some, given to all", [](TagTokens& tokens) { tokens.add(u"Night"_s); }, "+night"},
        {"removed", [](TagTokens& tokens) { tokens.removeAt(1); }, "-sea, sun"},
        {"removed from some", [](TagTokens& tokens) { tokens.removeAt(2); }, "-night"},
        {"one of two cases", [](TagTokens& tokens) { tokens.removeAt(3); }, "-école"},
        {"written anew in another case",
         [](TagTokens& tokens) {
             tokens.removeAt(0);
             tokens.add(u"lisbon"_s);
         },
         ""},
    };
    for (const auto& [what, edit, change] : cases) {
        const TagTokens base(before);
        TagTokens tokens(before);
        edit(tokens);
        EXPECT_EQ(told(tokens.changeFrom(base)), QString::fromUtf8(change)) << what;
    }
}

struct TagTokenFieldTest : testing::Test {
    TagTokenFieldTest() {
        field.resize(300, 80);
        window.show();
        window.activateWindow();
        QObject::connect(
            &field, &PBTagTokenField::tagChanged, &field,
            [this](const TagsChange& change) { changes.append(told(change)); });
    }
    QLineEdit& line() { return static_cast<QLineEdit&>(field.editor()); }
    /// "a b|(c)>d": the tokens, pale ones in brackets, and what is typed behind them.
    QString shown() {
        const auto textOf = [](const TagToken& token) {
            return token.isOfAll ? token.text : u'(' + token.text + u')';
        };
        const QString typed = line().text().isEmpty() ? QString() : u'>' + line().text();
        return support::listed(field.tokens().tokens(), textOf).join(u'|') + typed;
    }
    void type(const QString& text) { QTest::keyClicks(&line(), text); }
    void press(int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&line(), static_cast<Qt::Key>(key), modifiers);
    }
    void paste(const QString& text) {
        QGuiApplication::clipboard()->setText(text);
        press(Qt::Key_V, Qt::ControlModifier);
    }

    QWidget window;
    QStringList known;
    QStringList asked;
    PBTagTokenField field{
        [this](const QString& part) {
            asked.append(part);
            return known;
        },
        &window};
    QStringList changes;
};

TEST_F(TagTokenFieldTest, commaAndReturnCloseTokensAndReturnSendsOnce) {
    type(u"sun, sea,\"a, b\","_s);
    EXPECT_EQ(shown(), u"sun|sea|a, b"_s);
    EXPECT_TRUE(changes.isEmpty()) << "it is not over yet";
    type(u"moon"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(changes, QStringList{u"+sun +sea +a, b +moon"_s});
    press(Qt::Key_Return);
    field.commit();
    EXPECT_EQ(changes.size(), 1) << "nothing was changed since";
    type(u"Sun"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(changes.size(), 1) << "it is there already";
}

TEST_F(TagTokenFieldTest, backspaceOpensTheLastTokenAsItIsWritten) {
    field.setTags({{u"sun"_s, u"a, b"_s}, {}});
    press(Qt::Key_Backspace);
    EXPECT_EQ(shown(), u"sun>\"a, b\""_s);
    press(Qt::Key_Return);
    EXPECT_TRUE(changes.isEmpty()) << "it came back as it was";
    press(Qt::Key_Backspace);
    line().clear();
    press(Qt::Key_Return);
    EXPECT_EQ(changes, QStringList{u"-a, b"_s});
    // By the keys: the last one is selected, and removed.
    press(Qt::Key_Left);
    press(Qt::Key_Delete);
    EXPECT_EQ(shown(), QString());
    press(Qt::Key_Escape);
    EXPECT_EQ(shown(), u"sun"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(changes.size(), 1) << "Escape takes an edit back";
    field.setTags({{u"sun"_s}, {u"sea"_s}});
    press(Qt::Key_Backspace);
    type(u","_s);
    EXPECT_EQ(shown(), u"sun|(sea)"_s) << "a comma closes it as it was, too";
}

TEST_F(TagTokenFieldTest, aPastedListBecomesTokens) {
    paste(u"sun\nsea, \"a, b\" ,"_s + longTag + u',' + hebrew);
    EXPECT_EQ(shown(), u"sun|sea|a, b|"_s + longTag + u'|' + hebrew);
    // They lie within the field, however long.
    EXPECT_LE(field.heightForWidth(120), 400);
    field.grab();
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_X, Qt::ControlModifier);
    EXPECT_TRUE(field.tokens().isEmpty());
    press(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(shown(), u"sun|sea|a, b|"_s + longTag + u'|' + hebrew);
}

TEST_F(TagTokenFieldTest, anEditOutlivesWhatTheCatalogueSaysAndEndsWithTheKeyboard) {
    field.setTags({{u"sun"_s}, {u"sea"_s}});
    line().setFocus();
    type(u"moon"_s);
    field.setTags({{u"sun"_s, u"star"_s}, {}}); // a scan has read the photographs again
    EXPECT_EQ(shown(), u"sun|(sea)>moon"_s);
    QFocusEvent popup(QEvent::FocusOut, Qt::PopupFocusReason);
    QApplication::sendEvent(&line(), &popup);
    EXPECT_TRUE(changes.isEmpty());
    QFocusEvent elsewhere(QEvent::FocusOut, Qt::MouseFocusReason);
    QApplication::sendEvent(&line(), &elsewhere);
    EXPECT_EQ(changes, QStringList{u"+moon"_s});
    field.setTags({{u"sun"_s, u"star"_s}, {}});
    EXPECT_EQ(shown(), u"sun|star"_s);
    field.setGathering();
    EXPECT_FALSE(line().isEnabled());
    field.commit();
    EXPECT_EQ(changes.size(), 1);
}

TEST_F(TagTokenFieldTest, completionsAreChosenAndThoseThatAreThereAreLeftOut) {
    known = {u"sunset"_s, u"sun"_s, u"sunday, 5th"_s};
    field.setTags({{u"sunset"_s}, {}});
    type(u"sun"_s);
    EXPECT_EQ(asked.back(), u"sun"_s);
    QWidget* popup = QApplication::activePopupWidget();
    ASSERT_TRUE(popup);
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClick(popup, Qt::Key_Return);
    EXPECT_EQ(shown(), u"sunset|sunday, 5th"_s);
    type(u"su"_s);
    press(Qt::Key_Return); // none is chosen: what was typed counts
    EXPECT_EQ(changes, QStringList{u"+sunday, 5th +su"_s});
}

TEST_F(TagTokenFieldTest, theCrossRemovesATokenAndADoubleClickOpensIt) {
    field.setTags({{u"sun"_s}, {u"sea"_s}});
    // The last point from the right edge on that is the first token's.
    const int width = QFontMetrics(field.font()).horizontalAdvance(u"sun"_s);
    support::sendMouse(field, QEvent::MouseButtonPress, QPointF(4 + width + 2 * 7 + 14 - 9, 14));
    EXPECT_EQ(shown(), u"(sea)"_s);
    support::sendMouse(field, QEvent::MouseButtonDblClick, QPointF(14, 14));
    EXPECT_EQ(shown(), u">sea"_s);
    field.commit();
    EXPECT_EQ(changes, QStringList{u"-sun"_s}) << "who only looks at a pale one gives it to nobody";
    EXPECT_EQ(shown(), u"(sea)"_s);
    type(u"sea,"_s);
    field.commit();
    EXPECT_EQ(changes.back(), u"+sea"_s) << "written anew, all have it";
}

} // namespace
