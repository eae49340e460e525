#include "image/large/ImageVersions.h"

#include "group/PBImageFileItem.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <vector>

namespace {

using Kind = LoadedImages::Kind;

/// Scales went through points and back.
constexpr double nearly = 1 - 1e-9;
/// No version has a larger scale.
constexpr double aboveAllScales = 1000.0;

/// The file as it was known when a version was loaded.
struct FileState {
    quint64 size = 0;
    double date = 0;

    explicit FileState(const PBImageFileItem& item)
        : size(item.fileSize()), date(item.modifiedDate()) {}
    friend bool operator==(const FileState&, const FileState&) = default;
};

struct Version {
    LoadedImages loaded;
    double scale = 0;
    FileState file;
    bool isExpired = false;

    [[nodiscard]] bool isOutOfDate(const FileState& now) const { return isExpired || file != now; }
    [[nodiscard]] bool isPicture() const { return loaded.kind == Kind::Images; }
};

class ImageVersions final : public group::ItemImages {
public:
    std::vector<Version> versions;
};

std::vector<Version>* versionsOf(const PBImageFileItem& item) {
    auto* images = static_cast<ImageVersions*>(item.imageArray());
    return images ? &images->versions : nullptr;
}

std::vector<Version>& madeVersionsOf(PBImageFileItem& item) {
    if (!item.imageArray()) item.setImageArray(std::make_unique<ImageVersions>());
    return *versionsOf(item);
}

template <typename Predicate>
void eraseVersions(PBImageFileItem& item, Predicate goes) {
    platform::assertMainThread();
    std::vector<Version>* versions = versionsOf(item);
    if (!versions) return;
    std::erase_if(*versions, goes);
    if (versions->empty()) item.setImageArray(nullptr);
}

bool isFitIn(const Version& version, double fitInSide) {
    const QSize size = version.loaded.images->imageSize();
    return size.width() <= fitInSide && size.height() <= fitInSide;
}

/// The best of those that are up to date, or of the others.
const Version*
bestVersion(const std::vector<Version>& versions, double scale, const FileState* upToDate) {
    const Version* above = nullptr;
    const Version* below = nullptr;
    for (const Version& version : versions) {
        if (!version.isPicture() || (upToDate && version.isOutOfDate(*upToDate))) continue;
        if (version.scale >= scale * nearly) {
            if (version.scale < (above ? above->scale : aboveAllScales)) above = &version;
        } else if (version.scale > (below ? below->scale : 0.0)) {
            below = &version;
        }
    }
    return above ? above : below;
}

} // namespace

void addImage(PBImageFileItem& item, const LoadedImages& images, double scale) {
    platform::assertMainThread();
    if (images.kind == Kind::Nothing) return;
    std::vector<Version>& versions = madeVersionsOf(item);
    const FileState now(item);
    if (images.kind != Kind::NotNow)
        std::erase_if(versions, [&](const Version& version) { return version.isOutOfDate(now); });
    // Two displays that shared one load hand in one result.
    if (std::ranges::any_of(versions, [&](const Version& version) {
            return version.isPicture() && version.loaded.images == images.images;
        }))
        return;
    versions.push_back({images, scale, now});
}

AppropriateImage appropriateImageForScale(const PBImageFileItem& item, double scale) {
    platform::assertMainThread();
    AppropriateImage found;
    const std::vector<Version>* versions = versionsOf(item);
    if (!versions) return found;
    const FileState now(item);
    for (const Version& version : *versions) {
        if (version.isPicture() || version.isOutOfDate(now)) continue;
        found.hasNullImage = true;
        found.isUnreadable = found.isUnreadable || version.loaded.kind == Kind::NullMarker;
    }
    const Version* best = bestVersion(*versions, scale, &now);
    found.isMatched = best && best->scale >= scale * nearly;
    if (!best) best = bestVersion(*versions, scale, nullptr);
    if (!best) return found;
    found.images = best->loaded.images;
    found.scale = best->scale;
    return found;
}

void clearUnFitInImages(PBImageFileItem& item, double fitInSide) {
    eraseVersions(item, [fitInSide](const Version& version) {
        return version.isPicture() &&
               (version.loaded.images->imageCount() > 1 || !isFitIn(version, fitInSide));
    });
}

void clearFitInImage(PBImageFileItem& item, double fitInSide) {
    eraseVersions(item, [fitInSide](const Version& version) {
        return version.isPicture() && version.loaded.images->imageCount() <= 1 &&
               isFitIn(version, fitInSide);
    });
}

void clearNotNowMarkers(PBImageFileItem& item) {
    eraseVersions(item, [](const Version& version) { return version.loaded.kind == Kind::NotNow; });
}

void clearMarkersOfLargerVersions(PBImageFileItem& item) {
    const std::vector<Version>* versions = versionsOf(item);
    if (!versions) return;
    double least = aboveAllScales;
    for (const Version& version : *versions)
        if (version.isPicture()) least = std::min(least, version.scale);
    eraseVersions(item, [least](const Version& version) {
        return !version.isPicture() && version.scale > least;
    });
}

void expireImages(PBImageFileItem& item) {
    platform::assertMainThread();
    if (std::vector<Version>* versions = versionsOf(item))
        for (Version& version : *versions)
            version.isExpired = version.isExpired || version.isPicture();
}

void moveImages(PBImageFileItem& from, PBImageFileItem& to) {
    platform::assertMainThread();
    if (&from == &to || !from.imageArray()) return;
    std::vector<Version> moved = std::move(*versionsOf(from));
    from.setImageArray(nullptr);
    std::vector<Version>& versions = madeVersionsOf(to);
    versions.insert(
        versions.begin(), std::make_move_iterator(moved.begin()),
        std::make_move_iterator(moved.end()));
}

namespace {

template <typename Predicate>
qint64 bytesOf(const PBImageFileItem& item, Predicate counts) {
    qint64 bytes = 0;
    if (const std::vector<Version>* versions = versionsOf(item))
        for (const Version& version : *versions)
            if (version.isPicture() && counts(version)) bytes += version.loaded.images->byteCount();
    return bytes;
}

} // namespace

qint64 imageByteCount(const PBImageFileItem& item) {
    return bytesOf(item, [](const Version&) { return true; });
}

qint64 fitInByteCount(const PBImageFileItem& item, double fitInSide) {
    return bytesOf(item, [fitInSide](const Version& version) {
        return version.loaded.images->imageCount() <= 1 && isFitIn(version, fitInSide);
    });
}
