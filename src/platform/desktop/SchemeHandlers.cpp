#include "platform/desktop/SchemeHandlers.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>

namespace platform::SchemeHandlers {

namespace {

/// Such lists have some hundred lines; another file of that name is none.
constexpr qint64 longestList = 4 * 1024 * 1024;

/// The desktop files that a list names for a type, but for those that it takes away from it.
QStringList programsIn(const QString& path, const QByteArray& type) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > longestList) return {};
    QStringList programs;
    bool isRemoval = false;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (line.startsWith('[')) isRemoval = line == "[Removed Associations]";
        const qsizetype equals = line.indexOf('=');
        if (isRemoval || equals < 0 || line.first(equals).trimmed() != type) continue;
        programs += QString::fromUtf8(line.mid(equals + 1)).split(u';', Qt::SkipEmptyParts);
    }
    return programs;
}

} // namespace

Places standardPlaces() {
    Places places;
    places.lists = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    places.applications = QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
    places.lists += places.applications;
    return places;
}

bool hasProgram(QStringView scheme, const Places& places) {
    const QByteArray type = "x-scheme-handler/" + scheme.toUtf8();
    QStringList programs;
    for (const QString& folder : places.lists)
        programs += programsIn(folder + QStringLiteral("/mimeapps.list"), type);
    for (const QString& folder : places.applications)
        programs += programsIn(folder + QStringLiteral("/mimeinfo.cache"), type);
    return std::ranges::any_of(programs, [&](const QString& program) {
        return std::ranges::any_of(places.applications, [&](const QString& folder) {
            return QFileInfo(folder + u'/' + program.trimmed()).isFile();
        });
    });
}

bool hasProgram(QStringView scheme) {
    return hasProgram(scheme, standardPlaces());
}

} // namespace platform::SchemeHandlers
