#include "catalogue/marks/Marks.h"

#include "platform/files/PathNames.h"

namespace marks {

Marks MarksChange::appliedTo(Marks marks) const {
    if (stars) marks.stars = *stars;
    if (flag) marks.flag = *flag;
    if (tags) marks.tags = *tags;
    if (rotation) marks.rotation = *rotation;
    return marks;
}

MarksChange MarksChange::inverse(const Marks& before) const {
    MarksChange back;
    if (stars) back.stars = before.stars;
    if (flag) back.flag = before.flag;
    if (tags) back.tags = before.tags;
    if (rotation) back.rotation = before.rotation;
    return back;
}

QByteArray Trace::path() const {
    return rootPath.isEmpty() ? relativePath : platform::pathInFolder(rootPath, relativePath);
}

QByteArray Trace::fileName() const {
    return relativePath.mid(relativePath.lastIndexOf('/') + 1);
}

} // namespace marks
