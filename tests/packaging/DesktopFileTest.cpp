#include "image/codec/PBImageImporterManager.h"
#include "platform/TypeIdentifiers.h"

#include "support/Support.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

TEST(DesktopFileTest, offersTheProgramForFoldersAndEveryReadableFormat) {
    QStringList expected{QStringLiteral("inode/directory")};
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

} // namespace
