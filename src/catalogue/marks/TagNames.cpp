#include "catalogue/marks/TagNames.h"

#include "catalogue/PBCatalogue.h"
#include "catalogue/marks/TagRows.h"

namespace marks {

QString TagNames::tagWithTagId(qint64 tagId) {
    if (!_names) _names = TagRows::texts(_db);
    if (!_names) return {};
    const auto known = _names->constFind(tagId);
    if (known != _names->cend()) return *known;
    const QString tag = PBCatalogue(_db).tagWithTagId(tagId);
    if (!tag.isEmpty()) _names->insert(tagId, tag);
    return tag;
}

} // namespace marks
