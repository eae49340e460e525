#pragma once

#include "app/SingleInstance.h"
#include "platform/tasks/BoundedCalls.h"

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

#include <chrono>

/// The program on the message bus of the session, under the application's id, as desktops call it
/// there (org.freedesktop.Application): what they ask comes out as the requests of later starts do.
/// Main thread.
class DesktopService final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit DesktopService(const QDBusConnection& bus);
    ~DesktopService() override;

    /// Answers to the application's id from now on, or from when another process gives it up.
    /// Doesn't wait for the bus.
    void takeName();
    /// The call for which the bus has started this process: takes the name and waits. Nothing if
    /// none comes in that time.
    [[nodiscard]] std::optional<SingleInstance::Request>
    firstCall(std::chrono::milliseconds longestWait);

public Q_SLOTS:
    // What desktops call; the names are theirs. Platform data are what activates the window.
    Q_SCRIPTABLE void Activate(const QVariantMap& platformData);
    Q_SCRIPTABLE void Open(const QStringList& uris, const QVariantMap& platformData);
    /// "fullscreen" and "slideshow", as in the desktop file; others mean nothing.
    Q_SCRIPTABLE void ActivateAction(
        const QString& action, const QVariantList& parameter, const QVariantMap& platformData);

Q_SIGNALS:
    void requested(const SingleInstance::Request& request);

private:
    QDBusConnection _bus;
    const QString _path;
    int _opened = 0;               ///< calls of `Open`
    platform::BoundedCalls _looks; ///< paths wait for their disks there
};
