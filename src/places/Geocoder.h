#pragma once

#include "platform/values/PBValue.h"

#include <functional>
#include <vector>

namespace places {

/// Keys of an address dictionary. Each value is a text but for the last, an array of texts in the
/// order in which they stand on a letter. Any of them may be missing.
namespace AddressKeys {
inline const QString subLocality = QStringLiteral("SubLocality");
inline const QString city = QStringLiteral("City");
inline const QString state = QStringLiteral("State");
inline const QString country = QStringLiteral("Country");
inline const QString name = QStringLiteral("Name");
inline const QString formattedAddressLines = QStringLiteral("FormattedAddressLines");
} // namespace AddressKeys

/// What went wrong with a request. `NoResult` and `PartialResult` say that the place has no
/// address; asking again would give the same. The others say nothing of the place.
enum class GeocodeError : int {
    None = 0,
    Network = 2,
    NoResult = 8,
    PartialResult = 9,
    Cancelled = 10
};

struct GeocodePlacemark {
    /// A dictionary with the keys above; absent if the geocoder knows none.
    PBValue addressDictionary;
};

/// Placemarks, the best one first; with none of them the error tells why.
struct GeocodeAnswer {
    std::vector<GeocodePlacemark> placemarks;
    GeocodeError error = GeocodeError::None;
};

/// Finds the address of a position.
class Geocoder {
public:
    /// Called exactly once for each request, on a thread of the geocoder's choosing, and from
    /// within `reverseGeocodeLocation` where it knows the answer; must not block for long, ask for
    /// another one, destroy the geocoder or throw.
    using Completion = std::function<void(const GeocodeAnswer&)>;

    Geocoder() = default;
    Geocoder(const Geocoder&) = delete;
    Geocoder& operator=(const Geocoder&) = delete;
    /// Drops the requests that have no answer yet and waits for a completion that runs.
    virtual ~Geocoder() = default;

    /// Callers keep to one request at a time, on one thread. A position that is none (not finite,
    /// or beyond the poles or the antimeridian) has no result.
    virtual void reverseGeocodeLocation(PBLocation location, Completion completion) = 0;
    /// Requests that have no answer yet are answered with `Cancelled`, soon. Any thread.
    virtual void cancelGeocode() = 0;
};

} // namespace places
