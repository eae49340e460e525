#include "codec/PBImageImporterManager.h"
#include "core/Application.h"
#include "platform/files/TypeIdentifiers.h"

#include "support/Support.h"

TEST(DesktopFileTest, offersTheProgramForFoldersAndEveryReadableFormat) {
    QStringList expected{u"inode/directory"_s};
    PBImageImporterManager importers;
    for (const QString& type : importers.supportImageTypes())
        expected.append(platform::TypeIdentifiers::mimeType(type));
    expected.removeDuplicates();

    // Named by the id that the program gives its windows.
    const QString id = PBUtilities::applicationId();
    QFile file(QStringLiteral(VELMORA_PACKAGING "/%1.desktop").arg(id));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    std::map<QString, QString> entries;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n'))
        entries.emplace(line.section(u'=', 0, 0), line.section(u'=', 1));
    const QStringList offered = entries[u"MimeType"_s].split(u';', Qt::SkipEmptyParts);
    EXPECT_EQ(offered, expected) << "MimeType=" << expected.join(u';').toStdString() << ';';
    EXPECT_EQ(entries[u"Icon"_s], id);
    EXPECT_EQ(entries[u"DBusActivatable"_s], u"true");
    EXPECT_EQ(entries[u"Exec"_s], u"velmora %F"); // the first; those of the actions come later
    for (const QString& action : entries[u"Actions"_s].split(u';', Qt::SkipEmptyParts))
        EXPECT_TRUE(entries.contains(u"[Desktop Action "_s + action + u']'));
}
