#include "info/InfoPanel.h"

#include "info/InfoScrollArea.h"
#include "info/PBGeneralInfoView.h"
#include "info/PBMoreInfoContainerView.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <QHideEvent>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <utility>

using platform::localizedFormat;
using platform::localizedString;

InfoPanel::InfoPanel(const Parts& parts, QWidget* parent)
    : QWidget(parent), _pages(new QStackedWidget),
      _general(new PBGeneralInfoView(parts.mainFileDb, parts.folderPaths, parts.edits)),
      _more(new PBMoreInfoContainerView(parts.mainFileDb, parts.userDefaults)) {
    _pages->addWidget(new InfoScrollArea(_general));
    _pages->addWidget(_more);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_pages);
    setFocusProxy(_general);
}

InfoPanel::~InfoPanel() = default;

int InfoPanel::selectedInfo() const {
    return _pages->currentIndex();
}

void InfoPanel::selectInfo(int page) {
    _pages->setCurrentIndex(page == More ? More : General);
    setFocusProxy(_pages->currentWidget());
    updateInfo();
}

void InfoPanel::setSelection(InfoSelection selection) {
    platform::assertMainThread();
    _general->setSelection(selection);
    _more->setSelection(selection.shown);
    _selection = std::move(selection);
    updateInfo();
}

void InfoPanel::updateInfo() {
    platform::assertMainThread();
    _isOutOfDate = true;
    Q_EMIT titleDidChange(title());
    if (!isOnShow()) return;
    _isOutOfDate = false;
    if (selectedInfo() == General) {
        _general->updateInfos();
    } else {
        _more->updateInfos();
    }
}

void InfoPanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    noteOnShow();
}

void InfoPanel::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::EnabledChange) noteOnShow();
}

void InfoPanel::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    _wasOnShow = false;
}

void InfoPanel::noteOnShow() {
    if (std::exchange(_wasOnShow, isOnShow()) || !_wasOnShow) return;
    if (_isOutOfDate) updateInfo();
    Q_EMIT didComeOnShow();
}

bool InfoPanel::isGathering() const {
    return selectedInfo() == General ? _general->isGathering() : _more->isGathering();
}

void InfoPanel::setPaused(bool isPaused) {
    _general->setPaused(isPaused);
    _more->setPaused(isPaused);
}

void InfoPanel::commitEditing() {
    _general->commitEditing();
}

void InfoPanel::renameAgain(
    const std::shared_ptr<PBImageFileItem>& item, const QString& typedName) {
    _general->rename(item, typedName);
}

QString InfoPanel::title() const {
    const PBImageFileList& items = _selection.shown;
    if (items.empty()) return localizedString(u"GeneralInfo");
    const QString what =
        items.size() == 1
            ? items.front()->fileName()
            : localizedFormat(u"SomeFiles", {locale().toString(static_cast<qint64>(items.size()))});
    return localizedFormat(u"GeneralInfoOf", {what});
}
