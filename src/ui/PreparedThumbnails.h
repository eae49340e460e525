#pragma once

#include <QCache>
#include <QImage>
#include <QSize>

/// Thumbnails as they are painted: turned, on white, and scaled to the pixels of the screen. Kept
/// from one paint to the next, within a number of bytes. Main thread.
class PreparedThumbnails {
public:
    /// Enough for what is on show and some more.
    void setCapacity(qsizetype bytes);
    /// The picture for that many device pixels, opaque. `mayPrepare` false answers only what is
    /// kept, else a null image. Other angles than quarter turns are left to the painter.
    [[nodiscard]] QImage
    picture(const QImage& thumbnail, QSize pixels, double rotateAngle, bool mayPrepare);
    /// The steps of it, without keeping the result.
    [[nodiscard]] static QImage prepare(const QImage& thumbnail, QSize pixels, double rotateAngle);
    void clear() { _pictures.clear(); }

private:
    struct Key {
        qint64 thumbnail;
        int width;
        int height;
        int quarterTurns;
        friend bool operator==(const Key&, const Key&) = default;
        friend size_t qHash(const Key& key, size_t seed) {
            return qHashMulti(seed, key.thumbnail, key.width, key.height, key.quarterTurns);
        }
    };
    QCache<Key, QImage> _pictures{16 * 1024}; // in kibibytes
};

/// Counter-clockwise quarter turns, 0 to 3, of an angle in degrees; 0 for all other angles.
[[nodiscard]] int quarterTurns(double rotateAngle);
