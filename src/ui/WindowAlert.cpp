#include "ui/WindowAlert.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/work/MainThread.h"

#include <QMessageBox>
#include <QPushButton>

#include <utility>

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

void askInWindow(
    QWidget& window, const WindowQuestion& question, std::function<void(bool goesOn)> answered) {
    platform::assertMainThread();
    auto* box = new QMessageBox(
        QMessageBox::Question, platform::localizedString(u"Velmora"), question.message,
        QMessageBox::Cancel, &window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(question.details);
    box->setWindowModality(Qt::WindowModal);
    const QPushButton* consent = box->addButton(question.consent, QMessageBox::AcceptRole);
    box->setDefaultButton(QMessageBox::Cancel);
    box->setEscapeButton(QMessageBox::Cancel);
    QObject::connect(
        box, &QMessageBox::finished, box, [box, consent, answered = std::move(answered)] {
            answered(box->clickedButton() == consent);
        });
    box->open();
}
