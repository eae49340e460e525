#pragma once

#include <QIcon>
#include <QString>

/// The program's symbols, drawn as SVG and coloured by the theme in force. Main thread.
namespace Icons {

/// The symbol of that name, sharp at every size and pixel ratio; it follows a change of theme. A
/// name that ends in "_s" is the symbol of the name before it in the accent colour, "_n" at rest.
/// An unknown name gives an empty icon.
[[nodiscard]] QIcon named(const QString& name);

/// The symbol drawn once in the given colour.
[[nodiscard]] QPixmap
pixmap(const QString& name, const QSize& size, qreal devicePixelRatio, const QColor& color);

} // namespace Icons
