#pragma once

#include "formatpictures/FormatPictures.h"
#include "support/Support.h"

/// What a fuzzer does with an input: 0, or the end of the program if the input does harm.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// `formatpictures::picture` in every format.
namespace made {

struct Picture {
    std::string name;
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
/// Calls with damaged pictures of every kind, as a fuzzer's entry takes them.
void forDamagedSamples(int (*fuzzer)(const std::uint8_t* data, std::size_t size));

} // namespace made
