#include "ui/WindowAlert.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/work/MainThread.h"

#include <QMessageBox>

void showWindowAlert(QWidget& window, const QString& message, const QString& details) {
    platform::assertMainThread();
    auto* box = new QMessageBox(
        QMessageBox::Warning, platform::localizedString(u"Velmora"), message, QMessageBox::Ok,
        &window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(details);
    box->setWindowModality(Qt::WindowModal);
    box->open();
}
