#include "app/OpenedPaths.h"

#include "codec/PBImageImporterManager.h"
#include "core/FileTypes.h"
#include "platform/files/Spelling.h"
#include "platform/program/LocalizedTexts.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using Fault = UnopenedPath::Fault;

/// By the numbers of the faults: with the path, and what the system says.
struct Texts {
    QStringView sentence;
    QStringView key;
};
constexpr std::array<Texts, 7> texts{{
    {u"there is no file or folder %1", u"Unopened_Missing"},
    {u"%1 can't be opened (%2)", u"Unopened_NotLookedAt"},
    {u"%1 is neither a file nor a folder", u"Unopened_NeitherFileNorFolder"},
    {u"the file %1 can't be read (%2)", u"Unopened_UnreadableFile"},
    {u"the folder %1 can't be read (%2)", u"Unopened_UnreadableFolder"},
    {u"%1 is no photograph of a kind that can be shown", u"Unopened_NoPhotograph"},
    {u"%1 is no file of this computer", u"Unopened_NotOfThisComputer"},
}};

const Texts& textsOf(Fault fault) {
    return texts[static_cast<std::size_t>(fault)];
}

QString systemText(int error) {
    return QString::fromLocal8Bit(std::strerror(error));
}

std::optional<UnopenedPath> faultOf(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    struct stat status {};
    if (::stat(name.constData(), &status) != 0) {
        const bool isMissing = errno == ENOENT || errno == ENOTDIR;
        return UnopenedPath{isMissing ? Fault::Missing : Fault::NotLookedAt, path, errno};
    }
    const bool isFolder = S_ISDIR(status.st_mode);
    if (!isFolder && !S_ISREG(status.st_mode))
        return UnopenedPath{Fault::NeitherFileNorFolder, path, 0};
    if (::access(name.constData(), isFolder ? R_OK | X_OK : R_OK) != 0) {
        const Fault fault = isFolder ? Fault::UnreadableFolder : Fault::UnreadableFile;
        return UnopenedPath{fault, path, errno};
    }
    if (isFolder) return std::nullopt;
    const QString type = PBUtilities::extentionToUTI(PBUtilities::pathExtension(path));
    if (PBImageImporterManager().imageImporterClassForImageUTI(type)) return std::nullopt;
    return UnopenedPath{Fault::NoPhotograph, path, 0};
}

} // namespace

QString sentenceOf(const UnopenedPath& unopened) {
    QString sentence = textsOf(unopened.fault).sentence.toString();
    if (!sentence.contains(u"%2")) return sentence.arg(unopened.path);
    return sentence.arg(unopened.path, systemText(unopened.error));
}

QString localizedSentenceOf(const UnopenedPath& unopened) {
    const bool saysWhy = textsOf(unopened.fault).sentence.contains(u"%2");
    const QStringView key = textsOf(unopened.fault).key;
    return saysWhy ? platform::localizedFormat(key, {unopened.path, systemText(unopened.error)})
                   : platform::localizedFormat(key, {unopened.path});
}

QStringList openablePaths(
    const QStringList& paths, const std::function<void(const UnopenedPath& unopened)>& tell) {
    QStringList openable;
    for (const QString& path : paths) {
        if (const auto unopened = faultOf(path)) {
            tell(*unopened);
        } else {
            openable.append(platform::spelledAsOnDisk(path));
        }
    }
    return openable;
}
