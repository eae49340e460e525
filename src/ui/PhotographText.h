#pragma once

#include <QStringList>

class PBImageFileItem;

/// The marks of a photograph in words, for screen readers: "3 stars", "flagged", and that it is not
/// available.
[[nodiscard]] QStringList spokenMarks(const PBImageFileItem& item);
/// Its name, and the marks behind it.
[[nodiscard]] QString spokenName(const PBImageFileItem& item);
