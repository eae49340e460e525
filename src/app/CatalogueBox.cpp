#include "app/CatalogueBox.h"

#include "platform/program/LocalizedTexts.h"
#include "ui/Icons.h"

#include <QMessageBox>
#include <QPushButton>

using platform::localizedString;

void setUpCatalogueBox(QMessageBox& box, const QString& text, const QString& details) {
    box.setWindowTitle(localizedString(u"Velmora"));
    constexpr int iconSide = 48;
    box.setIconPixmap(Icons::named(QStringLiteral("warning")).pixmap(iconSide, iconSide));
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    box.setInformativeText(details);
    box.setEscapeButton(box.addButton(localizedString(u"CatalogueQuit"), QMessageBox::RejectRole));
}
