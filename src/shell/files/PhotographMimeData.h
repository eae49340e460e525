#pragma once

#include "platform/tasks/Mutex.h"
#include "platform/tasks/OperationQueue.h"

#include <QByteArray>
#include <QMimeData>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

/// Files on the pasteboard; of a single photograph also its picture, as a PNG file. That is made
/// behind the window from the moment of the copy: who asks for it on the pasteboard waits for the
/// main loop, which must not stand still while a large picture is decoded. Main thread.
class PhotographMimeData final : public QMimeData {
    Q_OBJECT

public:
    /// Empty where there is no picture, or it was stopped. On the queue's thread.
    using Make = std::function<QByteArray(const std::stop_token& stop)>;

    PhotographMimeData() = default;
    /// Stops what is made for it.
    ~PhotographMimeData() override { stop(); }

    /// Begins to make the picture.
    void offerPicture(platform::OperationQueue& queue, Make make);
    /// There will be no picture, unless it is there already.
    void stop() const {
        if (_picture) _picture->stop.request_stop();
    }

    [[nodiscard]] QStringList formats() const override;
    [[nodiscard]] bool hasFormat(const QString& mimeType) const override;

protected:
    /// Of the picture nothing until it is there, after a short wait: it can be asked for again.
    [[nodiscard]] QVariant retrieveData(const QString& mimeType, QMetaType type) const override;

private:
    struct Picture {
        std::stop_source stop;
        platform::Mutex mutex;
        platform::Condition made;
        std::optional<QByteArray> file VELMORA_GUARDED_BY(mutex);
    };
    std::shared_ptr<Picture> _picture; ///< nullptr: none is offered
};
