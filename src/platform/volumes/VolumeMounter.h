#pragma once

#include "platform/files/FileSystemIdentity.h"

#include <QString>

#include <functional>
#include <memory>

class QDBusConnection;

namespace platform {

/// Mounts volumes for the user. Main thread; nothing here waits.
class VolumeMounter {
public:
    /// With an empty text on success, else with the reason.
    using Completion = std::function<void(const QString& error)>;

    virtual ~VolumeMounter() = default;
    /// Whether it is worth trying.
    [[nodiscard]] virtual bool canMount(const FileSystemIdentity& fileSystem) const = 0;
    /// Calls the completion later, once.
    virtual void mount(const FileSystemIdentity& fileSystem, Completion completion) = 0;
};

/// Through the disk service of the desktop, for disks that are plugged in: finds the device by the
/// UUID of its file system. Calls that are under way when the mounter goes are dropped.
class DiskServiceMounter final : public VolumeMounter {
public:
    /// The service's well-known name on the bus.
    static constexpr auto serviceName = "org.freedesktop.UDisks2";

    /// `bus` gives the connection; asked when a disk is first to be mounted, since connecting takes
    /// time that a start has not.
    explicit DiskServiceMounter(std::function<QDBusConnection()> bus);
    ~DiskServiceMounter() override;

    [[nodiscard]] bool canMount(const FileSystemIdentity& fileSystem) const override;
    void mount(const FileSystemIdentity& fileSystem, Completion completion) override;

private:
    class Private;
    const std::unique_ptr<Private> _private;
};

} // namespace platform
