#include "codec/PBImageImporterManager.h"

#include "codec/PBImageImporter.h"
#include "core/FileTypes.h"

#include <algorithm>
#include <iterator>

namespace {

/// File names may end in anything.
constexpr std::size_t mostExtensions = 64;

} // namespace

PBImageImporterManager::PBImageImporterManager() {
    loadImageImporter();
    _types.resize(_imageImporterClassArray.size());
}

PBImageImporterManager::PBImageImporterManager(std::vector<PBImageImporterClass> importerClasses)
    : _imageImporterClassArray(std::move(importerClasses)),
      _types(_imageImporterClassArray.size()) {}

void PBImageImporterManager::loadImageImporter() {
    _imageImporterClassArray = {
        {[] { return std::optional(PBImageImporter::typeIdentifiers()); },
         PBImageImporter::initWithImagePath, PBImageImporter::propertiesOfImages}};
}

std::optional<QStringList> PBImageImporterManager::typesOfRow(std::size_t row) {
    const platform::Lock lock(_mutex);
    if (!_types[row]) _types[row] = _imageImporterClassArray[row].typeIdentifiers();
    return _types[row];
}

QStringList PBImageImporterManager::supportImageTypes() {
    QStringList all;
    for (std::size_t row = 0; row < _imageImporterClassArray.size(); ++row)
        all += typesOfRow(row).value_or(QStringList());
    return all;
}

const PBImageImporterClass*
PBImageImporterManager::imageImporterClassForImageUTI(const QString& type) {
    for (std::size_t row = 0; row < _imageImporterClassArray.size(); ++row) {
        const auto types = typesOfRow(row);
        if (types && PBUtilities::conformsToUTIArray(type, *types))
            return &_imageImporterClassArray[row];
    }
    return nullptr;
}

std::unique_ptr<PBImageImporterProtocol>
PBImageImporterManager::imageImporterForImageURL(const QString& path) {
    const PBImageImporterClass* importerClass = classForFile(path);
    return importerClass ? importerClass->initWithImagePath(path) : nullptr;
}

std::vector<codec::PictureProperties>
PBImageImporterManager::propertiesOfImages(std::span<const QString> paths, std::stop_token stop) {
    std::vector<codec::PictureProperties> all;
    all.reserve(paths.size());
    while (all.size() < paths.size()) {
        // Neighbours of one class are asked for together.
        const auto rest = paths.subspan(all.size());
        const PBImageImporterClass* importerClass = classForFile(rest.front());
        const auto end = std::ranges::find_if(rest.subspan(1), [&](const QString& path) {
            return classForFile(path) != importerClass;
        });
        const auto together =
            rest.first(static_cast<std::size_t>(end - rest.subspan(1).begin()) + 1);
        if (!importerClass) {
            all.resize(all.size() + together.size(), codec::PictureProperties::of(std::nullopt));
        } else if (importerClass->propertiesOfImages) {
            std::ranges::move(
                importerClass->propertiesOfImages(together, stop), std::back_inserter(all));
        } else {
            for (const QString& path : together)
                all.push_back(importerClass->initWithImagePath(path)->propertiesAtIndex(0, stop));
        }
    }
    return all;
}

const PBImageImporterClass* PBImageImporterManager::classForFile(const QString& path) {
    const QStringView extension = PBUtilities::pathExtension(path);
    {
        const platform::Lock lock(_mutex);
        if (const auto found = _classes.find(extension); found != _classes.end())
            return found->second;
    }
    const PBImageImporterClass* importerClass =
        imageImporterClassForImageUTI(PBUtilities::extentionToUTI(extension));
    const platform::Lock lock(_mutex);
    // A row that can't say its types yet may still claim the file.
    if (std::ranges::all_of(_types, [](const auto& types) { return types.has_value(); })) {
        if (_classes.size() >= mostExtensions) _classes.clear();
        _classes.insert_or_assign(extension.toString(), importerClass);
    }
    return importerClass;
}
