#include "platform/files/PathNames.h"

namespace platform {

namespace {

template <typename Text, typename View, typename Character>
Text joined(const Text& folder, View name, Character separator) {
    Text path;
    path.reserve(folder.size() + 1 + name.size());
    path += folder;
    if (!folder.endsWith(separator)) path += separator;
    path += name;
    return path;
}

} // namespace

QString pathInFolder(const QString& folder, QStringView name) {
    return joined(folder, name, u'/');
}

QByteArray pathInFolder(const QByteArray& folder, QByteArrayView name) {
    return joined(folder, name, '/');
}

} // namespace platform
