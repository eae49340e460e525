#include "codec/PBImageImporterManager.h"
#include "platform/files/TypeIdentifiers.h"

#include "support/Support.h"

TEST(DesktopFileTest, offersTheProgramForFoldersAndEveryReadableFormat) {
    QStringList expected{u"inode/directory"_s};
    PBImageImporterManager importers;
    for (const QString& type : importers.supportImageTypes())
        expected.append(platform::TypeIdentifiers::mimeType(type));
    expected.removeDuplicates();

    QFile file(QStringLiteral(VELMORA_PACKAGING "/velmora.desktop"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QStringList offered;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n'))
        if (line.startsWith(u"MimeType="))
            offered = line.section(u'=', 1).split(u';', Qt::SkipEmptyParts);
    EXPECT_EQ(offered, expected) << "MimeType=" << expected.join(u';').toStdString() << ';';
}
