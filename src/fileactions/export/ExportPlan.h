#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace fileactions {

/// The name of a photograph as a file of another type: its own with that type's extension, at most
/// 255 bytes.
[[nodiscard]] QByteArray exportName(const QByteArray& path, const QString& type);

/// The names of several, in their order. Those that would get the same one, upper and lower case
/// taken together, are told apart by numbers: "a.jpg", "a 1.jpg".
[[nodiscard]] std::vector<QByteArray>
exportNames(const std::vector<QByteArray>& paths, const QString& type);

} // namespace fileactions
