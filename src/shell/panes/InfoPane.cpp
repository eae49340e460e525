#include "shell/panes/InfoPane.h"

#include "platform/program/LocalizedTexts.h"
#include "shell/panes/MessagePane.h"
#include "shell/panes/WindowSettings.h"
#include "ui/HeaderBar.h"
#include "ui/Icons.h"

#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

using platform::localizedString;

InfoPane::InfoPane(platform::UserDefaults& defaults, QWidget* parent)
    : QWidget(parent), _defaults(defaults), _bar(new HeaderBar(localizedString(u"Information"))),
      _generalInfoButton(addButton(localizedString(u"GeneralInformation"), 0)),
      _moreInfoButton(addButton(localizedString(u"MoreInformation"), 1)),
      _panels(new QStackedWidget) {
    _panels->addWidget(
        new MessagePane(localizedString(u"NoGeneralInformation"), QStringLiteral("generalInfo")));
    _panels->addWidget(
        new MessagePane(localizedString(u"NoMoreInformation"), QStringLiteral("moreInfo")));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(_bar);
    layout->addWidget(_panels, 1);
    selectInfo(WindowSettings(_defaults).infoTag());
}

QToolButton* InfoPane::addButton(const QString& text, int tag) {
    auto* button = new QToolButton;
    button->setAutoRaise(true);
    button->setIconSize(QSize(16, 16));
    button->setFocusPolicy(Qt::TabFocus);
    button->setToolTip(text);
    button->setAccessibleName(text);
    connect(button, &QToolButton::clicked, this, [this, tag] {
        selectInfo(tag);
        WindowSettings(_defaults).setInfoTag(tag);
    });
    _bar->addWidget(button);
    return button;
}

int InfoPane::selectedInfo() const {
    return _panels->currentIndex();
}

void InfoPane::selectInfo(int tag) {
    _generalInfoButton->setIcon(
        Icons::named(tag == 0 ? QStringLiteral("generalInfo_s") : QStringLiteral("generalInfo_n")));
    _moreInfoButton->setIcon(
        Icons::named(tag == 1 ? QStringLiteral("moreInfo_s") : QStringLiteral("moreInfo_n")));
    _panels->setCurrentIndex(tag);
}
