#pragma once

#include "platform/volumes/MountTable.h"

#include <QObject>

#include <memory>

class QSocketNotifier;

namespace platform {

/// Tells when volumes come and go. Lives on the main thread and needs its event loop; the kernel
/// wakes it through the mount table itself, no daemon is asked and no thread is used.
class VolumeWatcher final : public QObject {
    Q_OBJECT

public:
    explicit VolumeWatcher(QString mountInfo, QObject* parent = nullptr);
    ~VolumeWatcher() override;

    /// Compares the table with that of the last look and tells the differences. Called by itself
    /// whenever the kernel reports a change.
    void check();

Q_SIGNALS:
    /// With the place where the volume is mounted. A volume that moved is first told as unmounted.
    void volumeDidMount(const QString& devicePath);
    void volumeDidUnmount(const QString& devicePath);

private:
    const QString _mountInfo;
    std::vector<Mount> _known;
    int _descriptor = -1;
    std::unique_ptr<QSocketNotifier> _notifier;
};

} // namespace platform
