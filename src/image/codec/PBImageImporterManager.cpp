#include "image/codec/PBImageImporterManager.h"

#include "core/FileTypes.h"
#include "image/codec/PBImageImporter.h"

#include <QFileInfo>

PBImageImporterManager::PBImageImporterManager() {
    loadImageImporter();
}

void PBImageImporterManager::loadImageImporter() {
    _imageImporterClassArray.clear();
    addImageImporterClass(
        {[] { return std::optional(PBImageImporter::typeIdentifiers()); },
         [](const QString& path) -> std::unique_ptr<PBImageImporterProtocol> {
             return PBImageImporter::initWithImagePath(path);
         }});
}

void PBImageImporterManager::addImageImporterClass(PBImageImporterClass importerClass) {
    _imageImporterClassArray.push_back(
        std::make_unique<Row>(Row{std::move(importerClass), std::nullopt}));
}

std::optional<QStringList> PBImageImporterManager::typesOfRow(Row& row) {
    const std::scoped_lock lock(_mutex);
    if (!row.types) row.types = row.importerClass.typeIdentifiers();
    return row.types;
}

QStringList PBImageImporterManager::supportImageTypes() {
    QStringList all;
    for (const auto& row : _imageImporterClassArray) {
        if (const auto types = typesOfRow(*row)) all += *types;
    }
    return all;
}

const PBImageImporterClass*
PBImageImporterManager::imageImporterClassForImageUTI(const QString& type) {
    for (const auto& row : _imageImporterClassArray) {
        const auto types = typesOfRow(*row);
        if (types && PBUtilities::conformsToUTIArray(type, *types)) return &row->importerClass;
    }
    return nullptr;
}

std::unique_ptr<PBImageImporterProtocol>
PBImageImporterManager::imageImporterForImageURL(const QUrl& url) {
    const QString path = url.toLocalFile();
    // A file that is not there has no type.
    if (path.isEmpty() || !QFileInfo::exists(path)) return nullptr;
    const QString type = PBUtilities::extentionToUTI(PBUtilities::pathExtension(path));
    const PBImageImporterClass* importerClass = imageImporterClassForImageUTI(type);
    return importerClass ? importerClass->initWithImagePath(path) : nullptr;
}
