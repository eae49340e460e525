#include "scan/ReadAhead.h"

#include <algorithm>

NewFile readNewFile(const QString& path, std::unique_ptr<image::ImageImporter> importer) {
    NewFile file;
    file.importer = std::move(importer);
    const auto values = platform::FileManager::resourceValues(path);
    if (!values || !values->isRegularFile || !platform::FileManager::isReadable(path)) return file;
    file.values = values;
    file.properties = file.importer->propertiesAtIndex(0).value_or(PBDictionary());
    return file;
}

ReadAhead::ReadAhead(int cores)
    : _capacity(static_cast<std::size_t>(std::max(1, cores)) * 4),
      _queue(QStringLiteral("read"), std::max(1, cores)) {}

std::future<NewFile> ReadAhead::read(QString path, std::unique_ptr<image::ImageImporter> importer) {
    // The queue's work has to be copyable, which neither a promise nor an importer is.
    struct Job {
        std::promise<NewFile> promise;
        std::unique_ptr<image::ImageImporter> importer;
    };
    auto job = std::make_shared<Job>();
    job->importer = std::move(importer);
    std::future<NewFile> file = job->promise.get_future();
    _queue.addOperation([job, path = std::move(path)] {
        job->promise.set_value(readNewFile(path, std::move(job->importer)));
    });
    return file;
}
