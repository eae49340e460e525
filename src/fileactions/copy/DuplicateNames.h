#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace fileactions {

/// The names of duplicates: those of "IMG.jpg" are "IMG copy.jpg", "IMG copy 1.jpg" and so on. A
/// name that ends so already counts on from its beginning.
class DuplicateNames {
public:
    /// `word` is that for "copy" in the user's language.
    DuplicateNames(const QByteArray& name, const QString& word);
    /// From n = 0 on; at most 255 bytes, as disks want it.
    [[nodiscard]] QByteArray name(std::int64_t n) const;

private:
    QByteArray _base;
    QByteArray _extension; ///< with its dot
    QByteArray _word;
};

/// The name of a folder that any disk takes, where this one refused the name: what the file systems
/// of sticks and cards don't take, and characters that control terminals, become "_", and so does a
/// dot or blank at the end.
[[nodiscard]] QByteArray portableFolderName(const QByteArray& name);

} // namespace fileactions
