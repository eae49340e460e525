#pragma once

#include <QBasicTimer>
#include <QObject>
#include <QPointF>
#include <QVariantAnimation>

class QWidget;

/// The buttons to the previous and the next photograph at the sides of the image view, which fade
/// in where the pointer comes near. Main thread.
class StepButtons final : public QObject {
    Q_OBJECT

public:
    /// Children of the view, which owns this object, too.
    explicit StepButtons(QWidget& view);

    /// Fades both in or out after so many seconds; nothing when that is their state already.
    void showPrevNextButton(bool isShown, double delay);
    void hideAtOnce();
    [[nodiscard]] bool isShown() const { return _isShown; }

    void setEnabled(bool hasPrevious, bool hasNext);
    /// At the sides of the view as it is now.
    void layOut();
    /// Whether a pointer at that place of the view is near a button.
    [[nodiscard]] bool isNearPrevious(const QPointF& point) const;
    [[nodiscard]] bool isNearNext(const QPointF& point) const;

Q_SIGNALS:
    void previousClicked();
    void nextClicked();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    class Button;

    void doShowPrevNextButton();
    void setOpacity(double opacity);

    QWidget& _view;
    Button* _previous;
    Button* _next;
    bool _isShown = false; // as asked for last
    QBasicTimer _delay;
    QVariantAnimation _fade;
};
