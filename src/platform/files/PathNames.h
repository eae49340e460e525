#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

namespace platform {

/// The path of what is called `name` (also a relative path) in the folder; a folder that ends with
/// a separator, as "/" does, gets no second one. Never touches the disk.
[[nodiscard]] QString pathInFolder(const QString& folder, QStringView name);
/// The same for paths as the file system spells them.
[[nodiscard]] QByteArray pathInFolder(const QByteArray& folder, QByteArrayView name);

} // namespace platform
