#pragma once

#include "image/PBBuildThumbOperation.h"

#include <QObject>

/// Tells on the main thread that thumbnails were built. Made and destroyed there.
class BuildThumbNotifier final : public QObject {
    Q_OBJECT

public:
    explicit BuildThumbNotifier(QObject* parent = nullptr) : QObject(parent) {}

    /// For `BuildThumbServices::didBuild`; may be called when this object is gone.
    [[nodiscard]] std::function<void(const std::shared_ptr<const PBBuildThumbOperation>&)> poster();

Q_SIGNALS:
    void PBNotiName_BuildThumb(const PBBuildThumbOperation& operation);

private:
    /// Expires with this object; looked at on the main thread only.
    const std::shared_ptr<BuildThumbNotifier*> _self = std::make_shared<BuildThumbNotifier*>(this);
};
