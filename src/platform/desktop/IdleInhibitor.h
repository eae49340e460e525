#pragma once

#include <QString>

#include <memory>

class QDBusConnection;

namespace platform {

/// Keeps the screen from being blanked, dimmed or locked while nobody touches the machine. What the
/// desktop was asked for ends with this object, and with the process, however that ends. Main
/// thread; nothing here waits.
class IdleInhibitor {
public:
    IdleInhibitor() = default;
    IdleInhibitor(const IdleInhibitor&) = delete;
    IdleInhibitor& operator=(const IdleInhibitor&) = delete;
    virtual ~IdleInhibitor() = default;

    /// From now on; nothing if it is so already. The reason is shown to the user by some desktops.
    virtual void inhibit(const QString& reason) = 0;
    /// No longer; nothing if it is not so.
    virtual void release() = 0;
    [[nodiscard]] virtual bool isInhibited() const = 0;
};

/// Over that bus: by the desktop portal's Inhibit, and where nobody answers to that, by the screen
/// saver's. The desktop lets go when the connection ends.
/// https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Inhibit.html
[[nodiscard]] std::unique_ptr<IdleInhibitor> makeIdleInhibitor(const QDBusConnection& bus);
/// Over the session's bus.
[[nodiscard]] std::unique_ptr<IdleInhibitor> makeIdleInhibitor();

} // namespace platform
