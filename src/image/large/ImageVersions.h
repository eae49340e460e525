#pragma once

#include "image/large/PBImages.h"

#include <memory>

class PBImageFileItem;

/// The decoded versions that a file item holds of itself, each with its scale: decoded pixels for
/// each pixel of the file. Main thread, as all that changes them. The item may be let go on any
/// thread: the pictures themselves are freed on a thread of the load line's own.
///
/// Versions belong to the file as it was when they were loaded, by its size and date. What belongs
/// to a former state of the file is *out of date*: such a picture is shown where there is no other,
/// but never taken for what was asked for, and such a null marker counts for nothing.

/// Appends what became of a load; `Nothing` changes nothing. What is out of date goes with the
/// first word of the file as it is now.
void addImage(PBImageFileItem& item, const LoadedImages& images, double scale);

struct AppropriateImage {
    /// The smallest version that has enough pixels, else the largest one; nullptr without any.
    std::shared_ptr<const PBImages> images;
    double scale = 0; ///< of that version
    /// It has enough pixels and is up to date: there is nothing to load.
    bool isMatched = false;
    /// A load of the file as it is failed: it is not to be asked for again.
    bool hasNullImage = false;
    /// The failure is the file's own: damaged, or too large. False where it only was "not now".
    bool isUnreadable = false;

    [[nodiscard]] bool needsLoad() const { return !isMatched && !hasNullImage; }
};
[[nodiscard]] AppropriateImage appropriateImageForScale(const PBImageFileItem& item, double scale);

/// Lets versions go that are larger than `fitInSide` on either side or have several frames: the
/// item is no longer the focus.
void clearUnFitInImages(PBImageFileItem& item, double fitInSide);
/// Lets still versions go that are not larger: the item is far from the focus.
void clearFitInImage(PBImageFileItem& item, double fitInSide);

/// A visit begins: what could not be loaded "now" may be asked for again.
void clearNotNowMarkers(PBImageFileItem& item);
/// Forgets that a larger version than one that is there could not be loaded. Without this an item
/// whose original is too large would stay a thumbnail once its fit-in picture has gone.
void clearMarkersOfLargerVersions(PBImageFileItem& item);
/// All versions are out of date, as when the screen has other colours.
void expireImages(PBImageFileItem& item);
/// Hands the versions on to the item that a scan made of the same photograph.
void moveImages(PBImageFileItem& from, PBImageFileItem& to);
/// Bytes of all pictures, and of those that `clearFitInImage` takes.
[[nodiscard]] qint64 imageByteCount(const PBImageFileItem& item);
[[nodiscard]] qint64 fitInByteCount(const PBImageFileItem& item, double fitInSide);
