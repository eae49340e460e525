#include "places/PlaceLookup.h"

#include "places/CountryNames.h"
#include "places/Geocoder.h"
#include "platform/program/StandardError.h"

#include <algorithm>

namespace places {

namespace {

/// Small to large, each once: a city that is its own division is named once.
PBArray addressLines(std::initializer_list<const QString*> parts) {
    PBArray lines;
    lines.reserve(parts.size());
    for (const QString* part : parts) {
        const bool isNew = std::ranges::none_of(lines, [part](const PBValue& line) {
            return line.getIf<QString>()->compare(*part, Qt::CaseInsensitive) == 0;
        });
        if (!part->isEmpty() && isNew) lines.emplace_back(*part);
    }
    return lines;
}

} // namespace

void tellUnusableGazetteer(const QString& path, const QString& reason) {
    platform::complain(QStringLiteral("Places can't be named, the gazetteer %1 can't be used: %2")
                           .arg(path, reason));
}

PlaceLookup::PlaceLookup(QString gazetteerPath, QStringList languages)
    : _path(std::move(gazetteerPath)), _languages(std::move(languages)) {}

std::optional<PBDictionary> PlaceLookup::addressOf(PBLocation location) {
    if (!isValidLocation(location) || !openGazetteer()) return std::nullopt;
    const auto nearest = _gazetteer->nearest(location, placeReach);
    if (!nearest) return std::nullopt;

    const Gazetteer::Place place = _gazetteer->place(nearest->place);
    const Division& region = division(place.division);
    const QString name = QString::fromUtf8(place.name);
    const QString city = place.city == nullptr ? name : QString::fromUtf8(place.city);
    const QString quarter = place.city == nullptr ? QString() : name;

    // Entered in key order, each at the end.
    PBDictionary address;
    address.emplace_hint(address.end(), AddressKeys::city, city);
    address.emplace_hint(address.end(), AddressKeys::country, region.country);
    address.emplace_hint(
        address.end(), AddressKeys::formattedAddressLines,
        addressLines({&quarter, &city, &region.name, &region.country}));
    address.emplace_hint(address.end(), AddressKeys::name, name);
    if (!region.name.isEmpty()) {
        address.emplace_hint(address.end(), AddressKeys::state, region.name);
    }
    if (!quarter.isEmpty()) {
        address.emplace_hint(address.end(), AddressKeys::subLocality, quarter);
    }
    return address;
}

bool PlaceLookup::openGazetteer() {
    if (!_wasOpened) {
        _wasOpened = true;
        QString reason;
        _gazetteer = Gazetteer::open(_path, &reason);
        if (_gazetteer == nullptr) {
            tellUnusableGazetteer(_path, reason);
            return false;
        }
        _divisions.resize(_gazetteer->divisionCount());
    }
    return _gazetteer != nullptr;
}

const PlaceLookup::Division& PlaceLookup::division(std::uint32_t index) {
    Division& division = _divisions[index];
    if (!division.isRead) {
        const auto stored = _gazetteer->division(index);
        const auto& [first, second] = stored.countryCode;
        const auto key = static_cast<std::uint16_t>(
            static_cast<uchar>(first) * 256 + static_cast<uchar>(second));
        auto country = _countries.find(key);
        if (country == _countries.end()) {
            const QString code = QString::fromLatin1(stored.countryCode.data(), 2);
            country = _countries.emplace(key, countryName(code, _languages)).first;
        }
        division = {QString::fromUtf8(stored.name), country->second, true};
    }
    return division;
}

} // namespace places
