#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

class QKeyEvent;
class QMainWindow;
class QMenuBar;
class QToolBar;
class QWidget;

/// The window on the whole screen: menu bar and toolbar are out of sight then, and come back over
/// the content while the mouse is at the upper edge, or a menu is opened by its key. Main thread.
class FullScreenControl final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        QMainWindow& window;
        QToolBar& toolbar;
        /// The user has hidden the toolbar, and it isn't needed for a moment.
        std::function<bool()> hideToolbar;
    };

    /// The parts outlive this object.
    FullScreenControl(Parts parts, QObject* parent);

    [[nodiscard]] bool isFullScreen() const { return _isFullScreen; }
    void toggle();
    void leave();
    /// Brings the bars back on the whole screen, for as long as they are used.
    void showBars() { reveal(true); }
    /// Shows the bars as the state of the window and the user's choice want it.
    void updateBars();

Q_SIGNALS:
    /// The window has entered or left the whole screen.
    void fullScreenDidChange(bool isFullScreen);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void stateChanged();
    void takeBarsOver();
    void giveBarsBack();
    void reveal(bool isRevealed);
    void placeBars();
    void hideUnlessUsed();
    [[nodiscard]] bool opensMenu(const QKeyEvent& event) const;

    const Parts _parts;
    QMenuBar& _menuBar;
    // Children of the window.
    QWidget* _edge;
    QWidget* _bars; // holds both bars on the whole screen
    QTimer _hideTimer{this};
    bool _isFullScreen = false;
    bool _isRevealed = false;
};
