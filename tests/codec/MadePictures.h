#pragma once

#include "support/Support.h"

#include <QImage>

/// What a fuzzer does with an input: 0, or the end of the program if the input does harm.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Encoded pictures of every format: by libraries at hand, or from the files in pictures/, which
/// the formats' own encoders once made of `picture`.
namespace made {

/// Red fades to the right, green downwards: wrong rows, sizes and channels all show.
[[nodiscard]] QImage gradient(QSize size);
/// Such a gradient of 160 x 96; in its upper half each three pixels side by side are the same.
[[nodiscard]] QImage picture();
/// What a file in pictures/ holds: frames.gif, gradient.jxl and so on; unpacked, if it ends in
/// ".z".
[[nodiscard]] QByteArray file(const char* name);

struct Picture {
    const char* name;
    QByteArray bytes;
    /// The type that the file's name would say, where the bytes do not.
    QString typeHint = {};
    /// How far colours may be off: what the format or its encoder loses.
    int tolerance = 3;
    bool isGray = false;
};

/// Three frames of 40 x 30: all red for 50 ms; then a blue square of 10 x 10 at (5, 5) for 120 ms,
/// whose first row is transparent, and which `disposal` removes before a third one, green, at
/// (25, 15) for 10 ms.
[[nodiscard]] QByteArray gif(int disposal, bool isInterlaced);

/// The same picture in every format and variation.
[[nodiscard]] std::vector<Picture> gradients();
/// These, and pictures with metadata, frames and transparency: what damage and fuzzing begin with.
[[nodiscard]] std::vector<Picture> samples();
/// Which of the types that the fuzzer of pixels knows the picture's name would say.
[[nodiscard]] int fuzzerHint(const Picture& picture);
/// Calls with damaged pictures of every kind, as a fuzzer's entry takes them.
void forDamagedSamples(int (*fuzzer)(const std::uint8_t* data, std::size_t size));

} // namespace made
