#pragma once

#include "codec/process/MemoryBudget.h"

#include <QByteArray>
#include <QString>

#include <stop_token>
#include <system_error>
#include <utility>

class PBImageImporterManager;

namespace fileactions {

/// How photographs leave the program.
struct ExportSettings {
    QString type;            ///< identifier of one that can be written
    double quality = 0.8;    ///< from 0 to 1
    int tiffCompression = 1; ///< TIFF's number of it; 1: none
    bool hasMetadata = true;
    bool hasLocation = true; ///< among the metadata
    int maxSize = 0;         ///< the longest side in pixels, never enlarged; 0: as it is
    bool operator==(const ExportSettings&) const = default;
};

/// A photograph as a file of another type.
struct ExportedPicture {
    /// `bad_message`: the photograph can't be read; `not_supported`: it can't be written as this
    /// type; `operation_canceled`: stopped; `resource_unavailable_try_again`: not now.
    std::error_code error;
    QByteArray content;
    bool isMetadataMissing = false; ///< some of it was wanted, and is not there
};

/// Reads photographs at their full size or reduced, turns them, and encodes them upright, in their
/// own colours and with as many bits as they have. Any thread, and several at once: together they
/// take the memory that the budget has.
class PictureExport {
public:
    /// The importers outlive it. `threads`: for each picture, where its encoder can use them.
    PictureExport(PBImageImporterManager& importers, ExportSettings settings, int threads = 1)
        : _importers(importers), _settings(std::move(settings)), _threads(threads) {}

    /// `angle`: in degrees, counter-clockwise. Blocks; never throws: what there is no memory for is
    /// not to be had now.
    [[nodiscard]] ExportedPicture
    make(const QString& path, double angle, const std::stop_token& stop);

private:
    [[nodiscard]] ExportedPicture
    tryToMake(const QString& path, double angle, const std::stop_token& stop);

    PBImageImporterManager& _importers;
    const ExportSettings _settings;
    const int _threads;
    codec::process::MemoryBudget _memory;
};

/// Whether a photograph can be read at all, by a small version of it; true where that can't be told
/// now. Blocks; any thread.
[[nodiscard]] bool
isReadable(PBImageImporterManager& importers, const QString& path, const std::stop_token& stop);

/// A single photograph; see `PictureExport`.
[[nodiscard]] ExportedPicture exportPicture(
    PBImageImporterManager& importers, const QString& path, double angle,
    const ExportSettings& settings, const std::stop_token& stop);

} // namespace fileactions
