#pragma once

#include <QByteArray>
#include <QString>

#include <stop_token>
#include <system_error>

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
    bool isMetadataMissing = false; ///< it was wanted, and can't be written
};

/// Reads the photograph at its full size or reduced, turns it by the angle (degrees,
/// counter-clockwise) and encodes it upright, in its own colours. Blocks; any thread.
[[nodiscard]] ExportedPicture exportPicture(
    PBImageImporterManager& importers, const QString& path, double angle,
    const ExportSettings& settings, const std::stop_token& stop);

} // namespace fileactions
