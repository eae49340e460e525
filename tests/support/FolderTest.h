#pragma once

#include "support/Support.h"

#include <cstdio>

namespace support {

/// A folder of the test's own; names are paths below it.
struct FolderTest : testing::Test {
    QString path(QStringView name) const { return temporary.path() + u'/' + name.toString(); }
    void write(QStringView name, const QByteArray& bytes = "x") const {
        writeFile(path(name), bytes);
    }
    /// Makes the folder.
    QString make(QStringView name) const {
        EXPECT_TRUE(QDir().mkpath(path(name)));
        return path(name);
    }
    void move(QStringView from, QStringView to) const {
        ASSERT_EQ(std::rename(QFile::encodeName(path(from)), QFile::encodeName(path(to))), 0);
    }

    QTemporaryDir temporary;
};

} // namespace support
