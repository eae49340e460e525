#pragma once

#include <QImage>
#include <QSizeF>

/// What of a small picture that a camera put into a file may stand for the photograph until its own
/// thumbnail is there: all of it where it has the photograph's shape, and what lies between black
/// bars where that has. A null image otherwise. Both are as stored, before any turn; a photograph
/// of unknown size takes anything. Any thread.
[[nodiscard]] QImage standInFor(const QImage& embedded, const QSizeF& photograph);
