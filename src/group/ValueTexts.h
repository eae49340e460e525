#pragma once

#include "platform/values/PBValue.h"

#include <QString>
#include <QStringView>

#include <functional>

/// The texts of stored values: for group names and for the information panels.
namespace group {

/// The text of a tag by its id; empty for an id without one. Called on the thread that asks for a
/// text.
using TagLookup = std::function<QString(qint64 tagId)>;

/// The text of a value that is kept under a column's name. A value of another type than the column
/// should have, or a code that its field does not list, gives the plain text of the value; absent
/// and the null marker give the empty text.
[[nodiscard]] QString
stringWithDbKey(QStringView key, const PBValue& value, const TagLookup& tagWithTagId);

} // namespace group
