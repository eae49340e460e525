#pragma once

#include "platform/volumes/VolumeMounter.h"

#include <QObject>

#include <vector>

namespace platform {

/// Through the system's table of file systems, for servers above all: what it lets users mount, or
/// mounts by itself when somebody looks. Calls that are under way when the mounter goes are left
/// to end by themselves.
class TableMounter final : public VolumeMounter {
public:
    /// The file of the table, and the programs that mount a place and that look at one.
    struct System {
        QString table = QStringLiteral("/etc/fstab");
        QString mount = QStringLiteral("mount");
        QString look = QStringLiteral("stat");
    };
    TableMounter() : TableMounter(System()) {}
    explicit TableMounter(System system) : _system(std::move(system)) {}

    [[nodiscard]] bool canMount(const FileSystemIdentity& fileSystem) const override;
    void mount(const FileSystemIdentity& fileSystem, Completion completion) override;

private:
    struct Entry {
        QString place; ///< empty: there is none that could be mounted
        bool isAutomatic = false;
    };
    [[nodiscard]] Entry entryOf(const QByteArray& source) const;

    const System _system;
    QObject _calls; ///< completions of calls go with it
};

/// Through the desktop, for the servers and devices that it shows as folders. Without a password
/// that the desktop has kept, this fails, and says so. Calls that are under way when the mounter
/// goes are left to end by themselves.
class ShareMounter final : public VolumeMounter {
public:
    /// `program` takes "mount" and an address.
    explicit ShareMounter(QString program = QStringLiteral("gio")) : _program(std::move(program)) {}

    [[nodiscard]] bool canMount(const FileSystemIdentity& fileSystem) const override;
    void mount(const FileSystemIdentity& fileSystem, Completion completion) override;

private:
    const QString _program;
    QObject _calls; ///< completions of calls go with it
};

/// The first of several mounters that can do it.
class AnyMounter final : public VolumeMounter {
public:
    /// They outlive this object.
    explicit AnyMounter(std::vector<VolumeMounter*> mounters) : _mounters(std::move(mounters)) {}

    [[nodiscard]] bool canMount(const FileSystemIdentity& fileSystem) const override;
    void mount(const FileSystemIdentity& fileSystem, Completion completion) override;

private:
    const std::vector<VolumeMounter*> _mounters;
};

} // namespace platform
