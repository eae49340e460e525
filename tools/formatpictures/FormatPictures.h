#pragma once

#include <QByteArray>
#include <QImage>
#include <QStringList>

#include <string_view>

/// One small picture in each format, depth and arrangement that the program reads: for its tests,
/// and to look at. Single-threaded.
namespace formatpictures {

/// Red fades to the right, green downwards: wrong rows, sizes and channels all show.
[[nodiscard]] QImage gradient(QSize size);
/// Such a gradient of 160 x 96; in its upper half each three pixels side by side are the same. What
/// most of the files show.
[[nodiscard]] QImage picture();

/// The names of all files: frames.gif, gradient.jxl and so on.
[[nodiscard]] QStringList names();
/// What the file of that name holds; empty where its library has no encoder, or for another name.
[[nodiscard]] QByteArray file(std::string_view name);

} // namespace formatpictures
