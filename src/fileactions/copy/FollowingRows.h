#pragma once

#include <QByteArray>

namespace fileactions {

/// What the catalogue takes over of files that the program itself moves, so that it keeps what it
/// knows of them. On the thread of the command.
class FollowingRows {
public:
    virtual ~FollowingRows() = default;
    /// Names are about to change. What scans see of the catalogue and of the disk from here to
    /// `settle` is of one moment.
    virtual void begin() {}
    virtual void moved(const QByteArray& /*path*/, const QByteArray& /*toPath*/) {}
    /// The file at the path is about to become another photograph, or is one now.
    virtual void replaced(const QByteArray& /*path*/) {}
    /// A file is back where it was, where its row may have stayed.
    virtual void returned(const QByteArray& /*path*/) {}
    /// Stores what came since `begin`. Called before anything that takes time.
    virtual void settle() {}
};

} // namespace fileactions
