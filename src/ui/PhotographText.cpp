#include "ui/PhotographText.h"

#include "group/PBImageFileItem.h"
#include "platform/program/LocalizedTexts.h"

using platform::localizedString;

QStringList spokenMarks(const PBImageFileItem& item) {
    QStringList parts;
    const auto stars = static_cast<qint64>(item.star());
    if (stars == 1) parts += localizedString(u"Accessible_Star");
    if (stars > 1) parts += platform::localizedFormat(u"Accessible_Stars", {stars});
    if (item.flagged()) parts += localizedString(u"Accessible_Flagged");
    if (item.isAway()) parts += localizedString(u"Accessible_Away");
    return parts;
}

QString spokenName(const PBImageFileItem& item) {
    return (QStringList{item.fileName()} + spokenMarks(item)).join(QStringLiteral(", "));
}
