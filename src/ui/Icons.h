#pragma once

#include <QIcon>
#include <QString>

/// The program's symbols, drawn as SVG and coloured by the theme in force. They are drawn on a grid
/// of 16 points, many on one of 24 as well: at these sizes and their multiples lines fall on whole
/// pixels. Main thread.
namespace Icons {

/// The symbol of that name; it follows a change of theme. A name that ends in "_n" is the symbol of
/// the name before it at rest. One that ends in "_s" is its selected form: in its own drawing if it
/// has one, and in the accent colour, which for flags and stars is their own.
/// An unknown name gives an empty icon.
[[nodiscard]] QIcon named(const QString& name);

/// The symbol drawn once in the given colour. The name is that of a drawing, or ends in "_s" or
/// "_n".
[[nodiscard]] QPixmap
pixmap(const QString& name, const QSize& size, qreal devicePixelRatio, const QColor& color);

} // namespace Icons
