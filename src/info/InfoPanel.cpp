#include "info/InfoPanel.h"

#include <QStackedWidget>
#include <QVBoxLayout>

InfoPanel::InfoPanel(const Parts& parts, QWidget* parent)
    : QWidget(parent), _parts(parts), _pages(new QStackedWidget) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_pages);
}

InfoPanel::~InfoPanel() = default;

int InfoPanel::selectedInfo() const {
    return _pages->currentIndex();
}

void InfoPanel::selectInfo(int page) {
    _pages->setCurrentIndex(page);
}

void InfoPanel::setSelection(InfoSelection selection) {
    _selection = std::move(selection);
}

void InfoPanel::updateInfo() {}
void InfoPanel::commitEditing() {}
void InfoPanel::renameAgain(const std::shared_ptr<PBImageFileItem>&, const QString&) {}
