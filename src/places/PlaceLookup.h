#pragma once

#include "places/Gazetteer.h"

#include <QStringList>

#include <optional>
#include <unordered_map>
#include <vector>

namespace places {

/// The furthest that a place gives its name to its surroundings, in metres. From 100 km away a
/// coast of less than 780 m is below the horizon (3.57 km times the root of the height in metres):
/// further out on the sea or on the ice, a photograph no longer shows the place.
inline constexpr double placeReach = 100'000;

/// On standard error.
void tellUnusableGazetteer(const QString& path, const QString& reason);

/// Turns positions into address dictionaries by the nearest place of a gazetteer. The file is
/// opened when it is first needed; if that fails, standard error is told once and nothing has an
/// address. One thread at a time.
class PlaceLookup {
public:
    /// Countries are named in the first of the languages that can, see `countryName`.
    PlaceLookup(QString gazetteerPath, QStringList languages);

    /// `SubLocality` (for quarters), `City`, `State` (where the country is divided), `Country`,
    /// `Name` (of the place itself) and `FormattedAddressLines`; nothing for a position that is
    /// none or from which every place is further than `placeReach`.
    [[nodiscard]] std::optional<PBDictionary> addressOf(PBLocation location);

private:
    /// Texts of a first-level division, decoded once.
    struct Division {
        QString name;
        QString country;
        bool isRead = false;
    };

    [[nodiscard]] bool openGazetteer();
    [[nodiscard]] const Division& division(std::uint32_t index);

    const QString _path;
    const QStringList _languages;
    bool _wasOpened = false;
    std::shared_ptr<const Gazetteer> _gazetteer;
    std::vector<Division> _divisions;
    std::unordered_map<std::uint16_t, QString> _countries; // by the two letters of their codes
};

} // namespace places
