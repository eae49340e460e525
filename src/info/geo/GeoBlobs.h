#pragma once

#include "platform/PBValue.h"

#include <QByteArray>

#include <optional>
#include <span>
#include <vector>

/// The three blobs of a row of the table `Geo`, as CBOR (RFC 8949). The decoders face what anyone
/// may have written: they answer nothing for bytes that are no CBOR or of another shape, and skip
/// single values that they can't use. Any thread.
namespace GeoBlobs {

/// `Longitude` and `Latitude`: an array of floating-point numbers.
[[nodiscard]] QByteArray encodeCoordinates(std::span<const double> coordinates);
/// A value that is no number gives "not a number", so that two parallel arrays stay parallel.
[[nodiscard]] std::optional<std::vector<double>> decodeCoordinates(const QByteArray& bytes);

/// `AddressDict`: a map. Values other than texts, numbers, truth values, bytes, the null marker,
/// arrays and dictionaries of them are left out.
[[nodiscard]] QByteArray encodeAddress(const PBDictionary& address);
[[nodiscard]] std::optional<PBDictionary> decodeAddress(const QByteArray& bytes);

} // namespace GeoBlobs
