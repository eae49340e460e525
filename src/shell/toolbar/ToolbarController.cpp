#include "shell/toolbar/ToolbarController.h"

#include "browser/PBImageBrowserView.h"
#include "core/PBAppDelegate.h"
#include "core/Paths.h"
#include "fileactions/marks/EditRunner.h"
#include "library/PBPathHistory.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainThread.h"
#include "shell/commands/FilterCommands.h"
#include "shell/commands/MarkCommands.h"
#include "shell/panes/BrowserPane.h"
#include "shell/panes/PaneLayout.h"
#include "shell/services/ChosenPhotographs.h"
#include "shell/sidebar/SourceSelection.h"
#include "shell/toolbar/MainToolbar.h"
#include "ui/HeaderBar.h"
#include "ui/Icons.h"

#include <QEvent>
#include <QToolButton>

#include <utility>

using platform::localizedFormat;
using platform::localizedString;
using Command = ToolbarValidation::Command;

namespace {

const QString captionsKey = QStringLiteral("ToolbarCaptions");

QToolButton* barButton(HeaderBar& bar) {
    auto* button = new QToolButton;
    button->setAutoRaise(true);
    button->setIconSize(QSize(16, 16));
    button->setFixedSize(24, 22);
    button->setFocusPolicy(Qt::TabFocus);
    bar.addWidget(button);
    return button;
}

/// What a step of the history leads to, as a person calls it.
QString nameOf(const std::optional<PBPathHistory::Place>& place) {
    if (!place) return {};
    return place->relativePath.isEmpty() ? place->aliasObject->displayName()
                                         : PBUtilities::displayNameOfPath(place->relativePath);
}

void setTip(QAction* action, QStringView plain, QStringView to, const QString& name) {
    const QString text = name.isEmpty() ? localizedString(plain) : localizedFormat(to, {name});
    const QString keys = action->data().value<QKeySequence>().toString(QKeySequence::NativeText);
    action->setToolTip(keys.isEmpty() ? text : QStringLiteral("%1 (%2)").arg(text, keys));
}

} // namespace

ToolbarController::ToolbarController(const Parts& parts, QObject* parent)
    : QObject(parent), _parts(parts), _validation(makeValidation()) {
    connectHistory();
    connectFilters();
    connectMarks();
    connectSourceBar();
    MainToolbar& toolbar = _parts.toolbar;
    toolbar.setCaptions(_parts.userDefaults.boolForKey(captionsKey).value_or(false));
    connect(&toolbar, &MainToolbar::captionsChosen, this, [this](bool shown) {
        _parts.userDefaults.setBool(shown, captionsKey);
    });
    const auto align = [this] { _parts.toolbar.alignWithSidebar(_parts.panes.sideBarWidth()); };
    connect(&_parts.panes, &PaneLayout::changed, this, align);
    const PBImageBrowserView& browser = _parts.browserPane.browserView();
    connect(&browser, &PBImageBrowserView::selectionDidChange, this, [this] {
        validateVisibleItems();
    });
    connect(&browser, &PBImageBrowserView::itemCountDidChange, this, [this] {
        validateVisibleItems();
    });
    validateVisibleItems();
}

ToolbarValidation::Environment ToolbarController::makeValidation() {
    const PBPathHistory& history = _parts.pathHistory;
    const ChosenPhotographs& chosen = _parts.chosen;
    return {
        .canBack = [&history] { return history.canBack(); },
        .canForward = [&history] { return history.canForward(); },
        .firstSelected = [&chosen] { return chosen.first(); },
        .allSelected = [&chosen] { return chosen.all(); },
        .isLargeView = [this] { return _parts.delegate.isLargeViewMode(); },
        .isServed =
            [this](Command command) {
                const bool isOfFiles =
                    command == Command::shareClicked || command == Command::deleteClicked;
                return !isOfFiles || _served.contains(command);
            },
    };
}

void ToolbarController::serve(QAction& item, Command command, std::function<void()> perform) {
    _served.insert(command);
    connect(&item, &QAction::triggered, this, std::move(perform));
    validateVisibleItems();
}

void ToolbarController::connectHistory() {
    SourceSelection& selection = _parts.selection;
    connect(_parts.toolbar.backAction(), &QAction::triggered, &selection, &SourceSelection::back);
    connect(
        _parts.toolbar.forwardAction(), &QAction::triggered, &selection, &SourceSelection::forward);
    connect(
        &selection, &SourceSelection::historyDidChange, this, [this] { validateVisibleItems(); });
}

void ToolbarController::connectFilters() {
    FilterCommands& filters = _parts.filters;
    MainToolbar& toolbar = _parts.toolbar;
    connect(toolbar.filterFlagAction(), &QAction::triggered, this, [this] {
        _parts.filters.filter(0);
    });
    connect(toolbar.filterStarAction(), &QAction::triggered, this, [this] {
        _parts.filters.filter(1);
    });
    connect(&toolbar.searchField(), &SearchField::searchChanged, &filters, &FilterCommands::search);
    toolbar.searchField().installEventFilter(this);
    connect(&toolbar.searchField(), &SearchField::finished, this, [this] { leaveSearchField(); });
    connect(
        &filters, &FilterCommands::filterDidChange, this, [this] { updateFilterSegmentControl(); });
    connect(
        &filters, &FilterCommands::searchStringDidChange, this, [this] { updateSearchField(); });
    updateFilterSegmentControl();
    updateSearchField();
}

void ToolbarController::connectMarks() {
    const MainToolbar& toolbar = _parts.toolbar;
    MarkCommands& marks = _parts.marks;
    connect(toolbar.flagAction(), &QAction::triggered, &marks, &MarkCommands::flagClicked);
    connect(toolbar.rotateLeftAction(), &QAction::triggered, &marks, &MarkCommands::rotateLeft);
    connect(toolbar.rotateRightAction(), &QAction::triggered, &marks, &MarkCommands::rotateRight);
    const auto validate = [this] { validateVisibleItems(); };
    connect(&_parts.edits, &fileactions::EditRunner::didEdit, this, validate);
    connect(&_parts.edits, &fileactions::EditRunner::didReadAgain, this, validate);
}

void ToolbarController::connectSourceBar() {
    HeaderBar& bar = _parts.sourceBar;
    auto* add = barButton(bar);
    add->setDefaultAction(_parts.toolbar.addFolderAction());
    add->setIcon(Icons::named(QStringLiteral("add")));
    _subFolder = barButton(bar);
    _subFolder->setObjectName(QStringLiteral("subFolder"));
    connect(_subFolder, &QToolButton::clicked, &_parts.filters, &FilterCommands::recurseSubFolder);
    connect(&_parts.filters, &FilterCommands::recurseSubFolderDidChange, this, [this] {
        updateSourceBarBtn();
    });
    updateSourceBarBtn();
}

void ToolbarController::updateFilterSegmentControl() {
    const auto show = [this](QAction* action, group::FilterBit bit, const QString& image) {
        const bool isOn = (_parts.filters.currentFilter() & bit) != 0;
        action->setChecked(isOn);
        action->setIcon(Icons::named(image + (isOn ? QStringLiteral("_s") : QStringLiteral("_n"))));
    };
    show(_parts.toolbar.filterFlagAction(), group::FilterFlagged, QStringLiteral("flag_16"));
    show(_parts.toolbar.filterStarAction(), group::FilterRated, QStringLiteral("star_16"));
}

void ToolbarController::updateSearchField() {
    _parts.toolbar.searchField().showText(_parts.filters.searchString());
    endFindingUnlessUsed();
}

void ToolbarController::updateSourceBarBtn() {
    const bool isOn = _parts.filters.isRecursive();
    const QString text = localizedString(isOn ? u"LeaveOutSubfolders" : u"IncludeSubfolders");
    _subFolder->setIcon(
        Icons::named(isOn ? QStringLiteral("subFolder_s") : QStringLiteral("subFolder_n")));
    _subFolder->setToolTip(text);
    _subFolder->setAccessibleName(text);
}

void ToolbarController::updateHistoryTips() {
    const PBPathHistory& history = _parts.pathHistory;
    setTip(_parts.toolbar.backAction(), u"Back", u"BackTo", nameOf(history.backPlace()));
    setTip(
        _parts.toolbar.forwardAction(), u"Forward", u"ForwardTo", nameOf(history.forwardPlace()));
}

void ToolbarController::validateVisibleItems() {
    platform::assertMainThread();
    MainToolbar& toolbar = _parts.toolbar;
    const std::pair<QAction*, Command> items[] = {
        {toolbar.backAction(), Command::back},
        {toolbar.forwardAction(), Command::forward},
        {toolbar.rotateLeftAction(), Command::rotate},
        {toolbar.rotateRightAction(), Command::rotate},
        {toolbar.shareAction(), Command::shareClicked},
        {toolbar.deleteAction(), Command::deleteClicked},
    };
    for (const auto& [action, command] : items)
        action->setEnabled(_validation.isEnabled(command));
    const ToolbarValidation::Marks marks = _validation.marks();
    for (QAction* ofFiles : {toolbar.shareAction(), toolbar.deleteAction()})
        if (marks.areAllAway) ofFiles->setEnabled(false);
    const auto showMark = [&](QAction* action, bool isMarked, const QString& image) {
        action->setEnabled(marks.isEnabled);
        action->setIcon(
            Icons::named(image + (isMarked ? QStringLiteral("_s") : QStringLiteral("_n"))));
    };
    showMark(toolbar.flagAction(), marks.areAllFlagged, QStringLiteral("flag_16"));
    showMark(toolbar.ratingAction(), marks.areAllRated, QStringLiteral("star_16"));
    updateHistoryTips();
}

void ToolbarController::find() {
    if (!std::exchange(_isFinding, true)) Q_EMIT isFindingDidChange();
    _parts.toolbar.searchField().focusSearch();
}

void ToolbarController::leaveSearchField() {
    _parts.browserPane.browserView().setFocus(Qt::OtherFocusReason);
    endFindingUnlessUsed();
}

void ToolbarController::endFindingUnlessUsed() {
    const SearchField& field = _parts.toolbar.searchField();
    if (!_isFinding || field.hasFocus() || !field.text().isEmpty()) return;
    _isFinding = false;
    Q_EMIT isFindingDidChange();
}

bool ToolbarController::eventFilter(QObject* watched, QEvent* event) {
    // Hiding the field within the change of focus would move the focus once more.
    if (event->type() == QEvent::FocusOut)
        QMetaObject::invokeMethod(
            this, &ToolbarController::endFindingUnlessUsed, Qt::QueuedConnection);
    return QObject::eventFilter(watched, event);
}
