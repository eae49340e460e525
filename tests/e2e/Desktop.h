#pragma once

#include "support/Support.h"

#include <QPoint>
#include <QProcess>
#include <QRect>

namespace e2e {

/// A display of its own for one test, with a window manager, and with a pointer and keys that are
/// as real to programs as those of a user.
class Desktop {
public:
    static constexpr QRect screen{0, 0, 1600, 1000};

    /// Starts the display server and the window manager; `isRunning` says whether that worked.
    Desktop();
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    [[nodiscard]] bool isRunning() const { return _isManaged; }
    /// Programs talk to that message bus; to none without it.
    void setBus(const QString& address) { _bus = address; }
    /// For programs that are to show themselves here.
    [[nodiscard]] QProcessEnvironment environment() const;

    // The pointer. Points are those of the screen; the modifier is a key held down meanwhile, such
    // as "ctrl".
    void release() { xdotool({u"mouseup"_s, u"1"_s}); }
    void click(QPoint point, const QString& modifier = {});
    void doubleClick(QPoint point);
    /// Turns the wheel by so many notches, away from the user where they are positive.
    void wheel(QPoint point, int notches, const QString& modifier = {});
    /// Asks for the menu of what is there.
    void menu(QPoint point);
    /// Presses at the one point and goes to the other in a few steps, without letting go.
    void drag(QPoint from, QPoint to);

    // The keys.
    /// Such as "Return", "ctrl+a", "shift+Right".
    void key(const QString& name) { xdotool({u"key"_s, name}); }
    void type(const QString& text) { xdotool({u"type"_s, u"--delay"_s, u"5"_s, text}); }
    void minimize(const QString& windowId) { xdotool({u"windowminimize"_s, windowId}); }
    void resize(const QString& windowId, QSize size) {
        xdotool(
            {u"windowsize"_s, windowId, QString::number(size.width()),
             QString::number(size.height())});
    }

private:
    /// Answers what went wrong, or nothing.
    [[nodiscard]] QString failureOf(const QStringList& arguments) const;
    void xdotool(const QStringList& arguments) { EXPECT_EQ(failureOf(arguments), QString()); }

    QProcess _server;
    QProcess _windowManager;
    QString _display;
    QString _bus;
    bool _isManaged = false;
};

} // namespace e2e
