#include "info/PBGeneralInfoView.h"

#include "catalogue/PBCatalogue.h"
#include "info/PBStarRatingCell.h"
#include "info/tags/PBTagTokenField.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "ui/Icons.h"
#include "ui/PBModalTextField.h"

#include <QAction>
#include <QHideEvent>
#include <QMenu>
#include <QPainter>
#include <QTimerEvent>
#include <QToolButton>

#include <algorithm>
#include <utility>

using platform::localizedString;

namespace {

constexpr int controlGap = 5; // between a label and its control
constexpr int fieldLeft = 7;
constexpr int fieldTop = 17; // below the label of the tags
constexpr int belowField = 10;
constexpr int flagSize = 16;
constexpr int flagRoom = 3; // around the symbol
constexpr int mostCompletions = 20;

constexpr int rowIndex(GeneralRow row) {
    return static_cast<int>(row);
}

} // namespace

PBGeneralInfoView::PBGeneralInfoView(
    FMDatabase& mainFileDb, const group::FolderPaths& folderPaths, InfoEdits& edits,
    QWidget* parent)
    : InfoRowsView(parent), _database(mainFileDb), _folderPaths(folderPaths), _edits(edits) {
    setEmptyText(localizedString(u"No Selection"));
    makeControls();
}

PBGeneralInfoView::~PBGeneralInfoView() = default;

void PBGeneralInfoView::makeControls() {
    _flagButton = new QToolButton(this);
    _flagButton->setObjectName(QStringLiteral("infoFlag"));
    _flagButton->setAutoRaise(true);
    _flagButton->setIconSize(QSize(flagSize, flagSize));
    _flagButton->setFocusPolicy(Qt::StrongFocus);
    _flagButton->setAccessibleName(localizedString(u"FileFlag"));
    connect(_flagButton, &QToolButton::clicked, this, &PBGeneralInfoView::flagClicked);

    _ratingIndicator = new PBStarRatingCell(this);
    _ratingIndicator->setAccessibleName(localizedString(u"FileStars"));
    connect(_ratingIndicator, &PBStarRatingCell::ratingIndicatorAction, this, [this](int stars) {
        _edits.setStar(_selection.edited, stars);
    });

    _keywordsTokenField = new PBTagTokenField(
        [this](const QString& part) {
            // The text becomes part of a statement.
            return PBCatalogue(_database).completionArrayByTag(
                QString(part).replace(u'\'', QStringLiteral("''")), mostCompletions);
        },
        this);
    connect(
        _keywordsTokenField, &PBTagTokenField::tagChanged, this,
        [this](const TagsChange& change) { _edits.changeTags(_selection.edited, change); });
    connect(
        _keywordsTokenField, &PBTagTokenField::heightDidChange, this,
        &PBGeneralInfoView::layOutControls);
    connect(_keywordsTokenField, &PBTagTokenField::didBecomeFirstResponder, this, [this] {
        Q_EMIT visibilityWanted(QRect(0, height() - 1, 1, 1));
    });
    for (QWidget* control :
         {static_cast<QWidget*>(_flagButton), static_cast<QWidget*>(_ratingIndicator),
          static_cast<QWidget*>(_keywordsTokenField)})
        control->hide();
    setTabOrder(this, _flagButton);
    setTabOrder(_flagButton, _ratingIndicator);
    setTabOrder(_ratingIndicator, _keywordsTokenField);
}

// What is shown

void PBGeneralInfoView::setSelection(InfoSelection selection) {
    platform::assertMainThread();
    // A scan brings the same ones again and again, and nobody has finished typing for that.
    const bool isOtherShown = !hasSamePhotographs(selection.shown, _selection.shown);
    if (isOtherShown || !hasSamePhotographs(selection.edited, _selection.edited)) commitEditing();
    _isOtherSelection = _isOtherSelection || isOtherShown;
    _selection = std::move(selection);
}

void PBGeneralInfoView::updateInfos() {
    platform::assertMainThread();
    _reading = std::make_unique<GeneralReading>(_selection.shown, _database, _folderPaths);
    _readTimer.stop();
    readSome();
}

void PBGeneralInfoView::setPaused(bool isPaused) {
    if (std::exchange(_isPaused, isPaused) == isPaused || !isGathering()) return;
    if (isPaused) {
        _readTimer.stop();
    } else {
        readSome();
    }
}

void PBGeneralInfoView::readSome() {
    const bool isComplete = _isPaused ? _reading->isComplete() : _reading->readSome();
    if (isComplete) {
        _readTimer.stop();
    } else if (!_isPaused && !_readTimer.isActive()) {
        _readTimer.start(0, this);
    }
    // The values of the same photographs stay until there are newer ones.
    if (isComplete || _isOtherSelection) showMerged();
    if (isComplete) _isOtherSelection = false;
}

void PBGeneralInfoView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != _readTimer.timerId()) return InfoRowsView::timerEvent(event);
    readSome();
}

void PBGeneralInfoView::showMerged() {
    const GeneralMerge& merged = _reading->merged();
    const bool isComplete = _reading->isComplete();
    setEmptyText(localizedString(_reading->hasFailed() ? u"MetadataUnreadable" : u"No Selection"));
    const bool isEmpty = _selection.shown.empty() || _reading->hasFailed();
    InfoRows rows;
    if (!isEmpty) rows = merged.rows(isComplete, locale());
    const QList<QWidget*> controls{_flagButton, _ratingIndicator, _keywordsTokenField};
    if (!isEmpty) showControls(merged, isComplete);
    if (!isEmpty && isComplete) {
        // The field shows them; whoever copies the row, and a screen reader, has them from here.
        InfoRow& tags = rows[static_cast<std::size_t>(GeneralRow::Tag)];
        const QString written = _keywordsTokenField->tokens().written();
        tags.text = written.isEmpty() ? localizedString(u"NoTag") : written;
        tags.state = InfoRow::State::Value;
    }
    for (QWidget* control : controls)
        control->setVisible(!isEmpty);
    setRows(std::move(rows), rowIndex(GeneralRow::Tag), furtherHeight());
    layOutControls();
}

void PBGeneralInfoView::showControls(const GeneralMerge& merged, bool isComplete) {
    const PBValue& flag = merged.value(GeneralRow::FileFlag);
    setFlagShown(flag.toInteger() != 0, flag.isNull());
    const PBValue& stars = merged.value(GeneralRow::FileStars);
    _ratingIndicator->setRating(static_cast<int>(stars.toInteger()), stars.isNull());
    if (!isComplete) return _keywordsTokenField->setGathering();
    const MergedTags tags = _reading->tags();
    if (_isOtherSelection) {
        _keywordsTokenField->resetTags(tags);
    } else {
        _keywordsTokenField->setTags(tags);
    }
}

void PBGeneralInfoView::setFlagShown(bool isFlagged, bool isMixed) {
    _flagButton->setIcon(
        Icons::named(isFlagged ? QStringLiteral("flag_16_s") : QStringLiteral("flag_16_n")));
    _flagButton->setToolTip(localizedString(isFlagged ? u"ClearFlagTip" : u"SetFlagTip"));
    _flagButton->setAccessibleDescription(localizedString(
        isMixed     ? QStringView(u"Multivalue")
        : isFlagged ? QStringView(u"FlagState_On")
                    : QStringView(u"FlagState_Off")));
}

// Layout and painting

int PBGeneralInfoView::tagFieldTop() const {
    const RowMetrics& metrics = rowPainter().metrics();
    return metrics.labelRect(rowIndex(GeneralRow::Tag), width()).top() + metrics.textHeight +
           fieldTop - 13;
}

int PBGeneralInfoView::furtherHeight() const {
    return tagFieldTop() - rowPainter().metrics().top(rowIndex(GeneralRow::Tag)) +
           _keywordsTokenField->heightForWidth(std::max(0, width() - 2 * fieldLeft)) + belowField;
}

void PBGeneralInfoView::layOutControls() {
    const RowMetrics& metrics = rowPainter().metrics();
    const auto leftOf = [&](GeneralRow row) {
        return metrics.labelRect(0, width()).left() + controlGap +
               rowPainter().labelWidth(localizedString(keyOfGeneralRow(row)));
    };
    constexpr int button = flagSize + 2 * flagRoom;
    _flagButton->setGeometry(
        leftOf(GeneralRow::FileFlag) - flagRoom,
        metrics.controlMiddle(rowIndex(GeneralRow::FileFlag)) - button / 2, button, button);
    const QSize stars = _ratingIndicator->sizeHint();
    _ratingIndicator->setGeometry(
        leftOf(GeneralRow::FileStars) - PBStarRatingCell::leftRoom,
        metrics.controlMiddle(rowIndex(GeneralRow::FileStars)) - stars.height() / 2, stars.width(),
        stars.height());
    const int fieldWidth = std::max(0, width() - 2 * fieldLeft);
    _keywordsTokenField->setFont(metrics.font);
    _keywordsTokenField->setGeometry(
        fieldLeft, tagFieldTop(), fieldWidth, _keywordsTokenField->heightForWidth(fieldWidth));
    setFurtherHeight(furtherHeight());
}

void PBGeneralInfoView::paintControls(QPainter& painter) {
    const auto mark = [&](GeneralRow row, const QWidget& control) {
        const auto index = static_cast<std::size_t>(row);
        if (rows()[index].state == InfoRow::State::Mixed)
            rowPainter().drawMixedMark(
                painter, rowIndex(row), control.geometry().right() + 1, width());
    };
    mark(GeneralRow::FileFlag, *_flagButton);
    mark(GeneralRow::FileStars, *_ratingIndicator);
}

void PBGeneralInfoView::metricsDidChange() {
    layOutControls();
}

void PBGeneralInfoView::resizeEvent(QResizeEvent* event) {
    InfoRowsView::resizeEvent(event);
    layOutControls();
    // It stands over a rectangle that is another one now.
    if (_nameField) commitEditing();
}

void PBGeneralInfoView::changeEvent(QEvent* event) {
    InfoRowsView::changeEvent(event);
    if (event->type() == QEvent::LocaleChange && _reading) showMerged();
}

// Edits

void PBGeneralInfoView::hideEvent(QHideEvent* event) {
    InfoRowsView::hideEvent(event);
    // Not where the whole window is out of sight for a while.
    if (!event->spontaneous()) commitEditing();
}

void PBGeneralInfoView::commitEditing() {
    if (_nameField) _nameField->commit();
    _keywordsTokenField->commit();
}

void PBGeneralInfoView::flagClicked() {
    if (!_selection.edited.empty()) _edits.toggleFlag(_selection.edited);
}

bool PBGeneralInfoView::takesPress(const QPoint& point) {
    const QRect name = rowPainter().metrics().valueRect(rowIndex(GeneralRow::FileName), width());
    if (_selection.shown.size() != 1 || !name.contains(point)) return false;
    beginRename();
    return true;
}

void PBGeneralInfoView::activateRow(int row) {
    if (row == rowIndex(GeneralRow::FileName) && _selection.shown.size() == 1) beginRename();
    if (row == rowIndex(GeneralRow::FileFlag)) _flagButton->click();
    if (row == rowIndex(GeneralRow::FileStars)) _ratingIndicator->setFocus(Qt::OtherFocusReason);
    if (row == rowIndex(GeneralRow::Tag)) _keywordsTokenField->editor().setFocus();
}

void PBGeneralInfoView::addActions(QMenu& menu, int row) {
    if (row != rowIndex(GeneralRow::FileName) || _selection.shown.size() != 1) return;
    menu.addSeparator();
    menu.addAction(localizedString(u"RenameInPanel"), this, [this] { beginRename(); });
}

void PBGeneralInfoView::beginRename() {
    rename(_selection.shown.front(), _selection.shown.front()->fileName());
}

void PBGeneralInfoView::rename(
    const std::shared_ptr<PBImageFileItem>& item, const QString& typedName) {
    platform::assertMainThread();
    if (!hasSamePhotographs(_selection.shown, {item}) || !isVisible()) return;
    if (_nameField) _nameField->cancel();
    auto* field = new PBModalTextField(1, typedName, this);
    field->setFont(rowPainter().metrics().font);
    field->setAlignment(Qt::AlignLeading | Qt::AlignVCenter);
    constexpr int taller = 3;
    constexpr int left = 4;
    field->setGeometry(rowPainter()
                           .metrics()
                           .valueRect(rowIndex(GeneralRow::FileName), width())
                           .adjusted(-left, -taller, 0, taller));
    field->setAccessibleName(localizedString(u"FileName"));
    // What was typed belongs to this photograph, whatever is selected by then.
    connect(
        field, &PBModalTextField::textFieldDidFinished, this,
        [this, item](int, const QString& text) {
            if (!text.isEmpty() && text != item->fileName()) _edits.rename(item, text);
        });
    connect(field, &PBModalTextField::ended, this, [this](bool hadKeyboard) {
        _nameField.clear();
        if (hadKeyboard) setFocus(Qt::OtherFocusReason);
    });
    _nameField = field;
    field->show();
    field->setFocus();
    field->selectBaseName();
    Q_EMIT visibilityWanted(field->geometry());
}
