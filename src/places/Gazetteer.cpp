#include "places/Gazetteer.h"

#include <zlib.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <numbers>

namespace places {

namespace {

static_assert(std::endian::native == std::endian::little, "the file is read in place");

constexpr std::array<char, 8> magic{'V', 'E', 'L', 'G', 'A', 'Z', '\r', '\n'};
constexpr std::uint32_t version = 1;
// Places in a leaf of the tree, far beyond what makes sense.
constexpr std::uint32_t largestLeaf = 1024;

struct Header {
    std::array<char, 8> magic;
    std::uint32_t version;
    std::uint32_t leafSize;
    std::uint32_t places;
    std::uint32_t quarters;
    std::uint32_t divisions;
    std::uint32_t nameBytes;
    std::uint32_t checksum;
};
constexpr std::size_t headerSize = 36;

constexpr std::uint64_t pointSize = 12;
constexpr std::uint64_t recordSize = 8; // of a place, and of a division

QString tooShort() {
    return QStringLiteral("The file is too short.");
}

/// Empty for the head of a gazetteer of that many bytes.
QString problemOfHeader(const Header& header, std::uint64_t size) {
    if (header.magic != magic || header.version != version)
        return QStringLiteral("The file is not a gazetteer of version %1.").arg(version);
    const std::uint64_t expected = headerSize +
                                   std::uint64_t{header.places} * (pointSize + recordSize) +
                                   std::uint64_t{header.quarters} * sizeof(std::uint32_t) +
                                   std::uint64_t{header.divisions} * recordSize + header.nameBytes;
    return size == expected ? QString() : QStringLiteral("The file is cut off or too long.");
}

double radians(double degrees) {
    return degrees * (std::numbers::pi / 180);
}

Gazetteer::Point unitVector(PBLocation location) {
    const double latitude = radians(location.latitude);
    const double longitude = radians(location.longitude);
    return {
        static_cast<float>(std::cos(latitude) * std::cos(longitude)),
        static_cast<float>(std::cos(latitude) * std::sin(longitude)),
        static_cast<float>(std::sin(latitude))};
}

/// Descends the implicit tree, the side of the target first; `best` holds the nearest place so far
/// and the square of its straight distance, in Earth radii.
class TreeSearch {
public:
    TreeSearch(
        std::span<const Gazetteer::Point> points, std::uint32_t leafSize, Gazetteer::Point target)
        : _points(points), _leafSize(leafSize), _target(target) {}

    std::size_t best = 0;
    float bestSquare = 0;

    void visit(std::size_t low, std::size_t high, std::size_t axis) {
        if (high - low <= _leafSize) {
            for (std::size_t index = low; index < high; ++index) {
                consider(index);
            }
            return;
        }
        const std::size_t middle = (low + high) / 2;
        const float beyond = _target.axis[axis] - _points[middle].axis[axis];
        const std::size_t next = axis == 2 ? 0 : axis + 1;
        consider(middle);
        if (beyond < 0) {
            visit(low, middle, next);
            if (beyond * beyond < bestSquare) visit(middle + 1, high, next);
        } else {
            visit(middle + 1, high, next);
            if (beyond * beyond < bestSquare) visit(low, middle, next);
        }
    }

private:
    void consider(std::size_t index) {
        const auto& point = _points[index].axis;
        const float x = point[0] - _target.axis[0];
        const float y = point[1] - _target.axis[1];
        const float z = point[2] - _target.axis[2];
        const float square = x * x + y * y + z * z;
        if (square < bestSquare) {
            bestSquare = square;
            best = index;
        }
    }

    std::span<const Gazetteer::Point> _points;
    std::uint32_t _leafSize;
    Gazetteer::Point _target;
};

/// Hands out the sections one after the other; the caller has checked that they all fit.
template <typename Record>
std::span<const Record> takeSection(const uchar*& position, std::uint32_t count) {
    const std::span section(reinterpret_cast<const Record*>(position), count);
    position += section.size_bytes();
    return section;
}

} // namespace

bool isValidLocation(PBLocation location) {
    return std::abs(location.latitude) <= 90 && std::abs(location.longitude) <= 180;
}

bool Gazetteer::isThere(const QString& path, QString* reason) {
    QFile file(path);
    Header header{};
    if (!file.open(QIODevice::ReadOnly)) {
        *reason = file.errorString();
    } else if (file.read(reinterpret_cast<char*>(&header), headerSize) != headerSize) {
        *reason = tooShort();
    } else {
        *reason = problemOfHeader(header, static_cast<std::uint64_t>(file.size()));
    }
    return reason->isEmpty();
}

std::shared_ptr<const Gazetteer> Gazetteer::open(const QString& path, QString* reason) {
    const std::shared_ptr<Gazetteer> gazetteer(new Gazetteer);
    *reason = gazetteer->map(path);
    return reason->isEmpty() ? gazetteer : nullptr;
}

QString Gazetteer::map(const QString& path) {
    static_assert(sizeof(Header) == headerSize);
    static_assert(
        sizeof(Point) == pointSize && sizeof(PlaceRecord) == recordSize &&
        sizeof(DivisionRecord) == recordSize);
    _file.setFileName(path);
    if (!_file.open(QIODevice::ReadOnly)) return _file.errorString();
    const auto size = static_cast<std::uint64_t>(_file.size());
    if (size < headerSize) return tooShort();
    const uchar* bytes = _file.map(0, _file.size());
    if (bytes == nullptr) return _file.errorString();
    _file.close();

    Header header{};
    std::memcpy(&header, bytes, headerSize);
    if (const QString problem = problemOfHeader(header, size); !problem.isEmpty()) return problem;
    if (crc32_z(0, bytes + headerSize, size - headerSize) != header.checksum) {
        return QStringLiteral("The checksum is wrong.");
    }

    const uchar* position = bytes + headerSize;
    _leafSize = header.leafSize;
    _points = takeSection<Point>(position, header.places);
    _places = takeSection<PlaceRecord>(position, header.places);
    _quarters = takeSection<std::uint32_t>(position, header.quarters);
    _divisions = takeSection<DivisionRecord>(position, header.divisions);
    _names = takeSection<char>(position, header.nameBytes);
    return areReferencesValid() ? QString() : QStringLiteral("The file contradicts itself.");
}

bool Gazetteer::areReferencesValid() const {
    const auto isName = [this](std::uint32_t offset) { return offset < _names.size(); };
    return _leafSize >= 1 && _leafSize <= largestLeaf && !_names.empty() && _names.back() == '\0' &&
           std::ranges::all_of(
               _places,
               [&](const PlaceRecord& place) {
                   return isName(place.name) && place.division < _divisions.size() &&
                          place.quarter <= _quarters.size();
               }) &&
           std::ranges::all_of(
               _quarters, [this](std::uint32_t city) { return city < _places.size(); }) &&
           std::ranges::all_of(
               _divisions, [&](const DivisionRecord& division) { return isName(division.name); });
}

std::optional<Gazetteer::Nearest>
Gazetteer::nearest(PBLocation location, double maximumDistance) const {
    if (!isValidLocation(location)) return std::nullopt;
    // Beyond half the circumference, the chord would shorten again.
    const double angle = std::clamp(maximumDistance / earthRadius, 0.0, std::numbers::pi);
    const double longestChord = 2 * std::sin(angle / 2);
    TreeSearch search(_points, _leafSize, unitVector(location));
    search.best = _points.size();
    search.bestSquare = static_cast<float>(longestChord * longestChord);
    search.visit(0, _points.size(), 0);
    if (search.best == _points.size()) return std::nullopt;
    const double chord = std::sqrt(static_cast<double>(search.bestSquare));
    return Nearest{
        static_cast<std::uint32_t>(search.best),
        2 * earthRadius * std::asin(std::min(1.0, chord / 2))};
}

Gazetteer::Place Gazetteer::place(std::uint32_t index) const {
    const PlaceRecord& record = _places[index];
    Place place{_names.data() + record.name, nullptr, record.division};
    if (record.quarter != 0) {
        place.city = _names.data() + _places[_quarters[record.quarter - 1u]].name;
    }
    return place;
}

PBLocation Gazetteer::location(std::uint32_t index) const {
    const auto& [x, y, z] = _points[index].axis;
    return {
        std::asin(std::clamp(static_cast<double>(z), -1.0, 1.0)) * (180 / std::numbers::pi),
        std::atan2(static_cast<double>(y), static_cast<double>(x)) * (180 / std::numbers::pi)};
}

Gazetteer::Division Gazetteer::division(std::uint32_t index) const {
    return {_names.data() + _divisions[index].name, _divisions[index].countryCode};
}

} // namespace places
