#include "info/PBMoreInfoView.h"

#include "info/rows/MoreInfoRows.h"
#include "platform/desktop/DesktopPrograms.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <QAction>
#include <QDesktopServices>
#include <QMenu>
#include <QToolButton>
#include <QUrl>

using platform::localizedString;

namespace {

/// Below the rows of the page of EXIF.
constexpr int belowExif = 3;

const QString mapScheme = QStringLiteral("geo");

} // namespace

PBMoreInfoView::PBMoreInfoView(QWidget* parent)
    : InfoRowsView(parent), _mapButton(new QToolButton(this)) {
    _mapButton->setText(localizedString(u"ShowOnMap"));
    _mapButton->setFocusPolicy(Qt::StrongFocus);
    _mapButton->hide();
    connect(_mapButton, &QToolButton::clicked, this, &PBMoreInfoView::openMap);
    clear(u"No Selection");
}

void PBMoreInfoView::clear(QStringView textKey) {
    _location.reset();
    _mapButton->hide();
    setRows({}, 0, 0);
    setEmptyText(localizedString(textKey));
}

void PBMoreInfoView::showGathering() {
    clear(u"Gathering");
}

void PBMoreInfoView::showUnreadable() {
    clear(u"MetadataUnreadable");
}

void PBMoreInfoView::updateInfo(const MoreInfoDict& dictionaries) {
    platform::assertMainThread();
    if (!_selectInfoType) return clear(_selectCount != 0 ? u"No Metadata" : u"No Selection");
    InfoRows rows = MoreInfo::rows(dictionaries, *_selectInfoType, locale());
    const bool isGps = *_selectInfoType == MetadataCategory::GPS;
    _location = isGps ? MoreInfo::location(dictionaries) : std::nullopt;
    const bool isExif = *_selectInfoType == MetadataCategory::Exif;
    const int height = MoreInfo::heightInRows(*_selectInfoType, rows);
    setEmptyText(localizedString(u"No Metadata"));
    setRows(std::move(rows), height, isExif && height > 0 ? belowExif : 0);
    if (_location) {
        // Programs come and go while this one runs.
        _hasMapProgram = platform::DesktopPrograms::hasProgramForScheme(mapScheme);
        _mapButton->setEnabled(_hasMapProgram);
        _mapButton->setToolTip(
            _hasMapProgram ? geoAddress(*_location) : localizedString(u"NoProgramForMap"));
    }
    placeMapButton();
    _mapButton->setVisible(_location.has_value());
}

void PBMoreInfoView::placeMapButton() {
    const RowMetrics& metrics = rowPainter().metrics();
    const int row = static_cast<int>(rows().size());
    const QSize size = _mapButton->sizeHint();
    _mapButton->setFont(metrics.font);
    _mapButton->setGeometry(
        metrics.labelRect(row, width()).left(),
        metrics.top(row) + (metrics.rowHeight - size.height()) / 2, size.width(), size.height());
}

QString PBMoreInfoView::geoAddress(const PBLocation& location) {
    constexpr int places = 6; // a tenth of a metre
    return QStringLiteral("%1:%2,%3")
        .arg(
            mapScheme, QString::number(location.latitude, 'f', places),
            QString::number(location.longitude, 'f', places));
}

void PBMoreInfoView::openMap() const {
    if (_location) QDesktopServices::openUrl(QUrl(geoAddress(*_location)));
}

void PBMoreInfoView::addActions(QMenu& menu, int) {
    if (!_location) return;
    menu.addSeparator();
    QAction* show = menu.addAction(localizedString(u"ShowOnMap"), this, &PBMoreInfoView::openMap);
    show->setEnabled(_hasMapProgram);
    if (!_hasMapProgram) show->setToolTip(localizedString(u"NoProgramForMap"));
}

void PBMoreInfoView::metricsDidChange() {
    placeMapButton();
}

void PBMoreInfoView::resizeEvent(QResizeEvent* event) {
    InfoRowsView::resizeEvent(event);
    placeMapButton();
}
