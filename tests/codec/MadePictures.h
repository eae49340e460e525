#pragma once

#include "formatpictures/FormatPictures.h"
#include "support/Support.h"

#include <QImage>

/// `formatpictures::picture` in every format.
namespace made {

struct Picture {
    const char* name;
    QByteArray bytes;
    /// The type that the file's name would say, where the bytes do not.
    QString typeHint = {};
    /// How far colours may be off: what the format or its encoder loses.
    int tolerance = 3;
    bool isGray = false;
};

/// The same picture in every format and variation.
[[nodiscard]] std::vector<Picture> gradients();
/// These, and pictures with metadata, frames and transparency: what damage and fuzzing begin with.
[[nodiscard]] std::vector<Picture> samples();
/// Which of the types that the fuzzer of pixels knows the picture's name would say.
[[nodiscard]] int fuzzerHint(const Picture& picture);

} // namespace made
