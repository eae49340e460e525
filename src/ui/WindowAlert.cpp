#include "ui/WindowAlert.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <QMessageBox>
#include <QPushButton>

#include <utility>

void showWindowAlert(
    QWidget& window, const QString& message, const QString& details, std::function<void()> closed) {
    platform::assertMainThread();
    auto* box = new QMessageBox(
        QMessageBox::Warning, platform::localizedString(u"Velmora"), message, QMessageBox::Ok,
        &window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(details);
    box->setWindowModality(Qt::WindowModal);
    if (closed) QObject::connect(box, &QMessageBox::finished, box, std::move(closed));
    box->open();
}

void askInWindow(
    QWidget& window, const WindowQuestion& question, std::function<void(WindowAnswer)> answered) {
    platform::assertMainThread();
    auto* box = new QMessageBox(
        QMessageBox::Question, platform::localizedString(u"Velmora"), question.message,
        QMessageBox::Cancel, &window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(question.details);
    box->setWindowModality(Qt::WindowModal);
    const QPushButton* consent = box->addButton(question.consent, QMessageBox::AcceptRole);
    const QPushButton* other = question.other.isEmpty()
                                   ? nullptr
                                   : box->addButton(question.other, QMessageBox::AcceptRole);
    box->setDefaultButton(QMessageBox::Cancel);
    box->setEscapeButton(QMessageBox::Cancel);
    QObject::connect(
        box, &QMessageBox::finished, box, [box, consent, other, answered = std::move(answered)] {
            const QAbstractButton* clicked = box->clickedButton();
            if (clicked == consent) return answered(WindowAnswer::Consent);
            answered(other && clicked == other ? WindowAnswer::Other : WindowAnswer::Cancel);
        });
    box->open();
}
