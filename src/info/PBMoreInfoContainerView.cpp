#include "info/PBMoreInfoContainerView.h"

#include "info/CategorySelector.h"
#include "info/InfoEdits.h"
#include "info/InfoScrollArea.h"
#include "info/PBMoreInfoView.h"
#include "info/rows/MoreInfoRows.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainThread.h"
#include "ui/PBThemes.h"

#include <QLabel>
#include <QPaintEvent>
#include <QPainter>
#include <QTimerEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using platform::localizedString;

namespace {

const QString selectInfoTypeKey = QStringLiteral("selectInfoType");

} // namespace

PBMoreInfoContainerView::PBMoreInfoContainerView(
    FMDatabase& mainFileDb, platform::UserDefaults& userDefaults, QWidget* parent)
    : QWidget(parent), _database(mainFileDb), _userDefaults(userDefaults),
      _selectInfoType(userDefaults.stringForKey(selectInfoTypeKey).value_or(QString())),
      _segments(new CategorySelector), _label(new QLabel(localizedString(u"Metadata info"))),
      _infoView(new PBMoreInfoView), _scrollArea(new InfoScrollArea(_infoView)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 6, 0, 0);
    layout->setSpacing(6);
    layout->addWidget(_segments, 0, Qt::AlignHCenter);
    layout->addWidget(_label, 0, Qt::AlignHCenter);
    layout->addWidget(_scrollArea, 1);
    _segments->hide();
    _segments->setAccessibleName(localizedString(u"Metadata info"));
    setFocusProxy(_infoView);
    connect(
        _segments, &CategorySelector::segmentClicked, this,
        &PBMoreInfoContainerView::infoTypeSegClicked);
}

void PBMoreInfoContainerView::setSelection(PBImageFileList items) {
    platform::assertMainThread();
    _isOtherSelection = _isOtherSelection || !hasSamePhotographs(items, _items);
    _items = std::move(items);
}

void PBMoreInfoContainerView::updateInfos() {
    platform::assertMainThread();
    _reading = std::make_unique<MoreReading>(_items, _database);
    _readTimer.stop();
    readSome();
}

void PBMoreInfoContainerView::setPaused(bool isPaused) {
    if (std::exchange(_isPaused, isPaused) == isPaused || !isGathering()) return;
    if (isPaused) {
        _readTimer.stop();
    } else {
        readSome();
    }
}

void PBMoreInfoContainerView::readSome() {
    if (_isPaused ? _reading->isComplete() : _reading->readSome()) {
        _readTimer.stop();
        _isOtherSelection = false;
        return showMerged();
    }
    if (!_isPaused && !_readTimer.isActive()) _readTimer.start(0, this);
    // The values of the same photographs stay until there are newer ones.
    if (!_isOtherSelection) return;
    _segments->hide();
    _label->show();
    _infoView->showGathering();
}

void PBMoreInfoContainerView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != _readTimer.timerId()) return QWidget::timerEvent(event);
    readSome();
}

void PBMoreInfoContainerView::showMerged() {
    _moreInfoDict = _reading->hasFailed() ? MoreInfoDict() : _reading->merged().moreInfoDict();
    const std::vector<MetadataCategory> categories = MoreInfo::segments(_moreInfoDict);
    QStringList titles;
    for (const MetadataCategory category : categories)
        titles.append(MoreInfo::segmentTitle(category));
    _segments->setSegments(titles);
    _segments->setVisible(!categories.empty());
    _label->setVisible(categories.empty());
    _infoView->setSelectCount(static_cast<qint64>(_items.size()));
    if (_reading->hasFailed()) return _infoView->showUnreadable();
    const auto chosen = MoreInfo::chosenCategory(_moreInfoDict, _selectInfoType);
    if (chosen) selectCategory(*chosen);
    _infoView->setSelectInfoType(chosen);
    _infoView->updateInfo(_moreInfoDict);
}

void PBMoreInfoContainerView::selectCategory(MetadataCategory category) {
    const std::vector<MetadataCategory> categories = MoreInfo::segments(_moreInfoDict);
    _segments->setSelectedSegment(
        static_cast<int>(std::ranges::find(categories, category) - categories.begin()));
    const QStringView key = keyOfCategory(category);
    if (key.compare(_selectInfoType, Qt::CaseInsensitive) == 0) return;
    _selectInfoType = key.toString();
    _userDefaults.setString(_selectInfoType, selectInfoTypeKey);
}

void PBMoreInfoContainerView::infoTypeSegClicked(int segment) {
    const auto clicked = MoreInfo::categoryOfClick(_moreInfoDict, segment);
    const auto chosen = clicked ? clicked : _infoView->selectInfoType();
    if (!chosen) return;
    selectCategory(*chosen);
    _infoView->setSelectInfoType(chosen);
    _infoView->updateInfo(_moreInfoDict);
    _scrollArea->scrollToTop();
}

void PBMoreInfoContainerView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LocaleChange && !_moreInfoDict.empty())
        _infoView->updateInfo(_moreInfoDict);
}

void PBMoreInfoContainerView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), PBThemes::colors().sidebar);
}
