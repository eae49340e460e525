#include "image/BareJpeg.h"

#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

namespace bench {

QImage decodeBare(const QByteArray& file, unsigned eighths) {
    jpeg_decompress_struct info{};
    jpeg_error_mgr error{};
    info.err = jpeg_std_error(&error);
    jpeg_create_decompress(&info);
    jpeg_mem_src(
        &info, reinterpret_cast<const unsigned char*>(file.constData()),
        static_cast<unsigned long>(file.size()));
    jpeg_read_header(&info, TRUE);
    info.scale_num = eighths;
    info.scale_denom = 8;
    info.out_color_space = JCS_EXT_BGRA;
    jpeg_start_decompress(&info);
    QImage image(
        static_cast<int>(info.output_width), static_cast<int>(info.output_height),
        QImage::Format_RGB32);
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = image.scanLine(static_cast<int>(info.output_scanline));
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    return image;
}

unsigned long encodeBare(const QImage& image) {
    jpeg_compress_struct info{};
    jpeg_error_mgr error{};
    info.err = jpeg_std_error(&error);
    jpeg_create_compress(&info);
    unsigned char* bytes = nullptr;
    unsigned long length = 0;
    jpeg_mem_dest(&info, &bytes, &length);
    info.image_width = static_cast<JDIMENSION>(image.width());
    info.image_height = static_cast<JDIMENSION>(image.height());
    info.input_components = 4;
    info.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 50, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        auto* row = const_cast<JSAMPROW>(image.constScanLine(static_cast<int>(info.next_scanline)));
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    std::free(bytes);
    return length;
}

} // namespace bench
