#include "codec/MadePictures.h"

#include "codec/Bitmaps.h"
#include "codec/metadata/Pictures.h"

namespace made {

std::vector<Picture> gradients() {
    const QImage image = formatpictures::picture();
    std::vector<Picture> all{
        {"gray-runs.psd", {}, {}, 3, true},
        {"gray16.psd", {}, {}, 3, true},
        // Small differences of Lab are large ones of the darkest colours.
        {"lab.psd", {}, {}, 18},
        {"lab16-runs.psd", {}, {}, 18},
        {"tiles-lab.tif", {}, {}, 18},
        {"lab16.tif", {}, {}, 18},
        {"lossy.jxl", {}, {}, 16},
        {"cmyk.jpg", {}, {}, 12},
        {"cmyk-inverted.jpg", {}, {}, 12},
        {"gradient.heic", {}, {}, 16},
        {"deep.heic", {}, {}, 16},
        {"gradient.avif", {}, {}, 16}};
    for (const char* name : {"png.ico",        "gradient.ico",
                             "plain.tga",      "top.tga",
                             "runs32.tga",     "runs-from-right.tga",
                             "rgb.psd",        "rgb16-runs.psd",
                             "cmyk-runs.psd",  "cmyk16.psd",
                             "gradient.jp2",   "gradient.j2k",
                             "gradient.jxl",   "deep.jxl",
                             "big.tif",        "tiles-planar16.tif",
                             "planar.tif",     "tiles-cmyk-deflate.tif",
                             "cmyk16-lzw.tif", "deep.png",
                             "interlaced.png", "deep-interlaced.png"})
        all.push_back({name, {}});
    for (Picture& one : all) {
        one.bytes = formatpictures::file(one.name);
        if (std::string_view(one.name).ends_with(".tga"))
            one.typeHint = u"com.truevision.tga-image"_s;
    }
    all.push_back({"jpeg", PBUtilities::cgImageRefToJpegData(image), {}, 16});
    all.push_back({"png", PBUtilities::cgImageRefToPngData(image)});
    all.push_back({"webp", pictures::saved(image, "WEBP"), {}, 20});
    for (const char* format : {"BMP", "PPM", "TIFF"})
        all.push_back({format, pictures::saved(image, format)});
    return all;
}

} // namespace made
