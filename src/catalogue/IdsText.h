#pragma once

#include <QString>

#include <span>

namespace catalogue {

/// The ids as one argument for `json_each(?)`: sets of any size in one statement.
[[nodiscard]] inline QString idsText(std::span<const qint64> ids) {
    QString text(u'[');
    for (const qint64 id : ids) {
        if (text.size() > 1) text += u',';
        text += QString::number(id);
    }
    return text + u']';
}

} // namespace catalogue
