#include "shell/panes/InfoPane.h"

#include "platform/program/LocalizedTexts.h"
#include "shell/panes/WindowSettings.h"
#include "ui/HeaderBar.h"
#include "ui/Icons.h"

#include <QToolButton>
#include <QVBoxLayout>

using platform::localizedString;

InfoPane::InfoPane(const InfoPanel::Parts& parts, QWidget* parent)
    : QWidget(parent), _defaults(parts.userDefaults), _panel(new InfoPanel(parts)),
      _bar(new HeaderBar(_panel->title())),
      _generalInfoButton(addButton(localizedString(u"GeneralInformation"), InfoPanel::General)),
      _moreInfoButton(addButton(localizedString(u"MoreInformation"), InfoPanel::More)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(_bar);
    layout->addWidget(_panel, 1);
    setFocusProxy(_panel);
    connect(_panel, &InfoPanel::titleDidChange, _bar, &HeaderBar::setTitle);
    selectInfo(WindowSettings(_defaults).infoTag());
}

QToolButton* InfoPane::addButton(const QString& text, int tag) {
    auto* button = new QToolButton;
    button->setAutoRaise(true);
    button->setIconSize(QSize(16, 16));
    button->setFocusPolicy(Qt::TabFocus);
    button->setToolTip(text);
    button->setAccessibleName(text);
    connect(button, &QToolButton::clicked, this, [this, tag] { chooseInfo(tag); });
    _bar->addWidget(button);
    return button;
}

void InfoPane::chooseInfo(int tag) {
    selectInfo(tag);
    WindowSettings(_defaults).setInfoTag(tag);
}

void InfoPane::selectInfo(int tag) {
    const bool isGeneral = tag == InfoPanel::General;
    _generalInfoButton->setIcon(Icons::named(
        isGeneral ? QStringLiteral("generalInfo_s") : QStringLiteral("generalInfo_n")));
    _moreInfoButton->setIcon(
        Icons::named(isGeneral ? QStringLiteral("moreInfo_n") : QStringLiteral("moreInfo_s")));
    _panel->selectInfo(tag);
}
