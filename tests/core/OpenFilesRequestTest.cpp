#include "core/OpenFilesRequest.h"

#include "support/Support.h"

namespace {

/// Paths that end in "/" are folders, those with an "x" in their name are missing. Folders come out
/// with a "/" behind, or with their files in brackets; the file in focus has a star.
QString reduced(const QStringList& paths) {
    const QStringList clean = support::listed(
        paths, [](const auto& path) { return path.endsWith(u'/') ? path.chopped(1) : path; });
    const auto request = OpenFilesRequest::reduce(clean, [&](const QString& path) {
        using Kind = OpenFilesRequest::Kind;
        if (path.contains(u'x')) return Kind::Missing;
        return paths.contains(path + u'/') ? Kind::Folder : Kind::File;
    });
    if (!request) return u"none"_s;
    QStringList told;
    for (const auto& folder : request->folders) {
        QStringList names =
            support::listed(folder->fileArray, [](const auto& file) { return file->fileName; });
        if (folder->focusOpenFileObj) names.append(u'*' + folder->focusOpenFileObj->fileName);
        told.append(
            folder->folderPath + (names.isEmpty() ? u"/"_s : u"(%1)"_s.arg(names.join(u' '))));
    }
    EXPECT_EQ(request->namesFiles, paths.join(u' ').contains(u".jpg"_s));
    const QString first = request->firstFile.fileName;
    return u"%1 in %2%3%4"_s.arg(told.join(u' '), request->ancestor)
        .arg(request->isAncestorUnnamed ? u" unnamed"_s : QString())
        .arg(first.isEmpty() ? first : u", "_s + request->firstFile.folderPath + u'/' + first);
}

TEST(OpenFilesRequestTest, pathsComeDownToFoldersFilesAndOneAncestor) {
    // The folder wins over its files and over folders below it, in whichever order they come.
    for (const char* paths :
         {"/p/", "/p/a.jpg /p/", "/p/ /p/a.jpg /p/q/b.jpg", "/p/q/ /p/ /p/r/", "/p/q/a.jpg /p/"})
        EXPECT_EQ(reduced(QString::fromLatin1(paths).split(u' ')), u"/p/ in /p"_s) << paths;
    const std::pair<const char*, const char*> rows[] = {
        {"/p/a.jpg", "/p(*a.jpg) in /p unnamed, /p/a.jpg"},
        {"/p/a.jpg /p/a.jpg", "/p(*a.jpg) in /p unnamed, /p/a.jpg"},
        {"/p/b.jpg /p/A.jpg", "/p(b.jpg A.jpg) in /p unnamed, /p/b.jpg"},
        {"/p/q/a.jpg /p/Q/a.jpg", "/p/q(a.jpg) /p/Q(a.jpg) in /p unnamed, /p/q/a.jpg"},
        // Files above a whole folder stay beside it.
        {"/p/q/ /p/a.jpg", "/p/q/ /p(a.jpg) in /p, /p/a.jpg"},
        {"/o/p/q/ /o/p/r/", "/o/p/q/ /o/p/r/ in /o/p unnamed"},
        {"/p/q/a.jpg /p/r/", "/p/q(a.jpg) /p/r/ in /p unnamed, /p/q/a.jpg"},
        {"/m/a/ /n/b/", "/m/a/ /n/b/ in / unnamed"},
        {"/x/a.jpg /p/a.jpg", "/p(*a.jpg) in /p unnamed, /p/a.jpg"},
        {"/x /p/x.jpg", "none"}};
    for (const auto& [paths, expected] : rows)
        EXPECT_EQ(reduced(QString::fromLatin1(paths).split(u' ')), QString::fromLatin1(expected));
    EXPECT_EQ(reduced({}), u"none"_s);
}

} // namespace
