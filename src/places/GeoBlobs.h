#pragma once

#include <QByteArray>

#include <optional>
#include <span>
#include <vector>

/// The coordinates in a row of the table `Geo`, as CBOR (RFC 8949). The decoder faces what anyone
/// may have written: it answers nothing for bytes that are no CBOR or of another shape. Any thread.
namespace GeoBlobs {

/// `Longitude` and `Latitude`: an array of floating-point numbers.
[[nodiscard]] QByteArray encodeCoordinates(std::span<const double> coordinates);
/// A value that is no number gives "not a number", so that two parallel arrays stay parallel.
[[nodiscard]] std::optional<std::vector<double>> decodeCoordinates(const QByteArray& bytes);

} // namespace GeoBlobs
