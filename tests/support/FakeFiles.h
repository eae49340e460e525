#pragma once

#include "codec/PBImageImporterManager.h"
#include "platform/tasks/Mutex.h"
#include "support/Images.h"
#include "support/Support.h"

namespace support {

/// Reads what the function answers.
struct FakeImporter final : PBImageImporterProtocol {
    using Read = std::function<codec::ReadResult(const codec::DecodeRequest&, std::stop_token)>;

    explicit FakeImporter(Read told) : read(std::move(told)) {}
    codec::PictureProperties propertiesAtIndex(std::size_t, std::stop_token) override {
        return {codec::PropertiesStatus::Unreadable, {}};
    }
    codec::ReadResult
    readImage(const codec::DecodeRequest& request, std::stop_token stop) override {
        return read(request, stop);
    }
    std::size_t imageCount() override { return 1; }
    QString utiType() override { return {}; }
    QImage createEmbeddedImage(unsigned, std::stop_token) override { return embedded; }

    const Read read;
    QImage embedded; ///< none, to begin with
};

/// A file as its importer reads it: a picture of one colour, or why there is none.
struct FakeFile {
    QSize size{40, 40};
    QColor color = Qt::red;
    codec::ReadStatus status = codec::ReadStatus::Decoded;
    QImage::Format format = QImage::Format_RGB32;
};

/// Files by name, a gate that holds up their reading, and what was asked of them. Any thread.
class FakeFiles {
public:
    void set(const QString& name, const FakeFile& file) {
        const platform::Lock lock(_mutex);
        _files[name] = file;
    }
    void setOpen(bool isOpen) {
        const platform::Lock lock(_mutex);
        _isOpen = isOpen;
        _changed.notifyAll();
    }
    /// So many at a time.
    void waitUntilReading(int count = 1) {
        platform::Lock lock(_mutex);
        _changed.wait(lock, [this, count] {
            _mutex.assertHeld();
            return _running >= count;
        });
    }
    /// Since the last call, as "name@side", with "!" where the user waits.
    QStringList asked() {
        const platform::Lock lock(_mutex);
        return std::exchange(_asked, {});
    }
    int mostAtATime() {
        const platform::Lock lock(_mutex);
        return _most;
    }
    codec::ReadResult
    read(const QString& name, const codec::DecodeRequest& request, const std::stop_token& stop) {
        platform::Lock lock(_mutex);
        _most = std::max(_most, ++_running);
        _asked += name + u'@' + QString::number(request.maxSize) +
                  (request.urgency == codec::Urgency::Focus ? u"!"_s : QString());
        _changed.notifyAll();
        _changed.waitUnlessStopped(lock, stop, [this] {
            _mutex.assertHeld();
            return _isOpen;
        });
        --_running;
        if (stop.stop_requested()) return {codec::ReadStatus::NotNow, {}};
        const FakeFile& file = _files[name];
        if (file.status != codec::ReadStatus::Decoded) return {file.status, {}};
        const QSize most(request.maxSize, request.maxSize);
        const QSize size = most.isNull() ? file.size : file.size.scaled(most, Qt::KeepAspectRatio);
        return {file.status, {.image = filled(size, file.color, file.format)}};
    }

private:
    platform::Mutex _mutex;
    platform::Condition _changed;
    std::map<QString, FakeFile> _files VELMORA_GUARDED_BY(_mutex);
    bool _isOpen VELMORA_GUARDED_BY(_mutex) = true;
    int _running VELMORA_GUARDED_BY(_mutex) = 0;
    int _most VELMORA_GUARDED_BY(_mutex) = 0;
    QStringList _asked VELMORA_GUARDED_BY(_mutex);
};

/// Importers of such files.
struct FakeImporters final : PBImageImporterManager {
    explicit FakeImporters(FakeFiles& files)
        : PBImageImporterManager({PBImageImporterClass{
              .typeIdentifiers = [] { return QStringList{u"public.jpeg"_s}; },
              .initWithImagePath =
                  [&files](const QString& path) {
                      return std::make_unique<FakeImporter>(
                          std::bind_front(&FakeFiles::read, &files, path.section(u'/', -1)));
                  },
              .propertiesOfImages = {}}}) {}
};

} // namespace support
