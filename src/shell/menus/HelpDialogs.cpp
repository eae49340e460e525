#include "shell/menus/HelpDialogs.h"

#include "platform/program/LocalizedTexts.h"
#include "shell/menus/MainMenu.h"
#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QAction>
#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <sqlite3.h>

using platform::localizedFormat;
using platform::localizedString;

namespace {

QString withoutMnemonic(QString text) {
    return text.remove(u'&');
}

/// True where the dialog is open already, which then is in front.
bool raisesDialog(const QString& name, const QWidget& window) {
    auto* dialog = window.findChild<QDialog*>(name, Qt::FindDirectChildrenOnly);
    if (!dialog || !dialog->isVisible()) return false;
    dialog->raise();
    dialog->activateWindow();
    return true;
}

QDialog* makeDialog(const QString& name, const QString& title, QWidget& window) {
    auto* dialog = new QDialog(&window);
    dialog->setObjectName(name);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(title);
    return dialog;
}

QDialogButtonBox* closeButton(QDialog& dialog) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    return buttons;
}

void addShortcuts(QTreeWidgetItem& section, const QList<QAction*>& actions) {
    for (const QAction* action : actions) {
        if (action->menu()) {
            addShortcuts(section, action->menu()->actions());
        } else if (!action->shortcut().isEmpty()) {
            new QTreeWidgetItem(
                &section,
                {withoutMnemonic(action->text()),
                 QKeySequence::listToString(action->shortcuts(), QKeySequence::NativeText)});
        }
    }
}

/// A heading with some room above it.
QTreeWidgetItem* sectionItem(const QString& title, QFont font) {
    font.setBold(true);
    auto* section = new QTreeWidgetItem({title});
    section->setFont(0, font);
    section->setTextAlignment(0, Qt::AlignLeft | Qt::AlignBottom);
    section->setSizeHint(0, {0, QFontMetrics(font).height() * 2});
    return section;
}

/// Keys and gestures that belong to a view and stand in no menu.
struct ViewKeys {
    QStringView title;
    std::initializer_list<QStringView> rows; ///< keys of texts: "what; keys"
};

const ViewKeys viewKeys[] = {
    {u"ShortcutsInBrowser",
     {u"Shortcut_Arrows", u"Shortcut_ShiftArrows", u"Shortcut_Pages", u"Shortcut_Letters",
      u"Shortcut_Click", u"Shortcut_NameClick", u"Shortcut_ShowLarge", u"Shortcut_Flag",
      u"Shortcut_Stars", u"Shortcut_ThumbnailWheel"}},
    {u"ShortcutsInLargeView",
     {u"Shortcut_Steps", u"Shortcut_StepsByWheel", u"Shortcut_Ends", u"Shortcut_Zoom",
      u"Shortcut_ZoomWheel", u"Shortcut_ActualSize", u"Shortcut_FitIn", u"Shortcut_Pan",
      u"Shortcut_Flag", u"Shortcut_Stars", u"Shortcut_Back"}},
    {u"ShortcutsInSlideshow",
     {u"Shortcut_Pause", u"Shortcut_Steps", u"Shortcut_Ends", u"Shortcut_Interval",
      u"Shortcut_EndShow"}},
};

/// Rows whose keys change places where the wheel zooms.
QStringView rowWhereWheelZooms(QStringView row) {
    if (row == u"Shortcut_StepsByWheel") return u"Shortcut_StepsByOtherWheel";
    if (row == u"Shortcut_ZoomWheel") return u"Shortcut_ZoomPlainWheel";
    return row;
}

void addViewKeys(QTreeWidget& list, const ViewKeys& view, bool wheelZooms) {
    auto* section = sectionItem(localizedString(view.title), list.font());
    for (const QStringView row : view.rows) {
        const QString text = localizedString(wheelZooms ? rowWhereWheelZooms(row) : row);
        const QStringList parts = text.split(QStringLiteral("; "));
        new QTreeWidgetItem(section, {parts.value(0), parts.value(1)});
    }
    list.addTopLevelItem(section);
    section->setFirstColumnSpanned(true);
}

QTreeWidget* shortcutList(const MainMenu& menu, bool wheelZooms) {
    auto* list = new QTreeWidget;
    list->setColumnCount(2);
    list->setHeaderHidden(true);
    list->setRootIsDecorated(false);
    list->setItemsExpandable(false);
    list->setIndentation(12);
    list->setSelectionMode(QAbstractItemView::NoSelection);
    list->setFocusPolicy(Qt::StrongFocus);
    for (const MenuRow& row : menuBarRows()) {
        if (row.kind != MenuRow::Kind::Menu) continue;
        auto* section = sectionItem(withoutMnemonic(localizedString(row.text)), list->font());
        addShortcuts(*section, menu.menuWithTag(row.tag)->actions());
        if (section->childCount() == 0) {
            delete section;
            continue;
        }
        list->addTopLevelItem(section);
        section->setFirstColumnSpanned(true);
    }
    for (const ViewKeys& view : viewKeys)
        addViewKeys(*list, view, wheelZooms);
    list->expandAll();
    list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    list->header()->setStretchLastSection(false);
    return list;
}

} // namespace

void HelpDialogs::showShortcuts(const MainMenu& menu, bool wheelZooms, QWidget& window) {
    const QString name = QStringLiteral("shortcuts");
    if (raisesDialog(name, window)) return;
    QDialog* dialog = makeDialog(name, localizedString(u"ShortcutsTitle"), window);
    auto* layout = new QVBoxLayout(dialog);
    layout->addWidget(shortcutList(menu, wheelZooms));
    layout->addWidget(closeButton(*dialog));
    dialog->resize(540, 600);
    dialog->show();
}

void HelpDialogs::showAbout(QWidget& window) {
    const QString name = QStringLiteral("about");
    if (raisesDialog(name, window)) return;
    QDialog* dialog = makeDialog(name, withoutMnemonic(localizedString(u"Menu_About")), window);
    auto* picture = new QLabel;
    picture->setPixmap(Icons::pixmap(
        QStringLiteral("photographs"), QSize(72, 72), window.devicePixelRatioF(),
        PBThemes::colors().accent));
    picture->setAlignment(Qt::AlignHCenter);
    auto* text = new QLabel(localizedFormat(
        u"AboutText", {QCoreApplication::applicationVersion(), QString::fromLatin1(qVersion()),
                       QString::fromLatin1(sqlite3_libversion())}));
    text->setWordWrap(true);
    text->setAlignment(Qt::AlignHCenter);
    text->setTextInteractionFlags(Qt::TextBrowserInteraction);
    text->setOpenExternalLinks(true);
    auto* layout = new QVBoxLayout(dialog);
    layout->setContentsMargins(28, 24, 28, 18);
    layout->setSpacing(12);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    text->setFixedWidth(360);
    layout->addWidget(picture);
    layout->addWidget(text);
    layout->addWidget(closeButton(*dialog));
    dialog->show();
}
