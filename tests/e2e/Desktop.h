#pragma once

#include <QPoint>
#include <QProcess>
#include <QRect>
#include <QStringList>

namespace e2e {

/// A display of its own for one test, with a pointer and keys that are as real to programs as those
/// of a user. Without a window manager windows lie where they ask to, and get the keys only when
/// they are given them.
class Desktop {
public:
    static constexpr QRect screen{0, 0, 1600, 1000};

    /// Starts the display server; `isRunning` says whether that worked.
    Desktop();
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    /// The display server and the program that moves the pointer are installed.
    [[nodiscard]] static bool isInstalled();
    [[nodiscard]] bool isRunning() const { return !_display.isEmpty(); }
    /// Starts one that puts frames around windows, and makes them fill the screen. False if it
    /// isn't installed.
    [[nodiscard]] bool startWindowManager();
    [[nodiscard]] bool hasWindowManager() const {
        return _windowManager.state() == QProcess::Running;
    }
    /// For programs that are to show themselves here.
    [[nodiscard]] QProcessEnvironment environment() const;

    // The pointer. Points are those of the screen; `modifiers` are keys held down meanwhile, such
    // as "ctrl".
    void move(QPoint point);
    void release();
    void click(QPoint point, const QStringList& modifiers = {});
    /// Presses at the one point and goes to the other in a few steps, without letting go.
    void drag(QPoint from, QPoint to);
    /// Turns of the wheel; positive is down.
    void wheel(int turns);

    // The keys.
    /// Such as "Return", "ctrl+a", "shift+Right".
    void key(const QString& name);
    void type(const QString& text);
    /// Gives the keys to a window; false while it isn't on the screen yet.
    [[nodiscard]] bool focus(qint64 windowId);
    void resize(qint64 windowId, QSize size);

private:
    /// Answers what went wrong, or nothing.
    [[nodiscard]] QString failureOf(const QStringList& arguments) const;
    void xdotool(const QStringList& arguments);

    QProcess _server;
    QProcess _windowManager;
    QString _display;
};

} // namespace e2e
