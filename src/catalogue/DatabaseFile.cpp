#include "catalogue/DatabaseFile.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

QString DatabaseFile::moveAside(const QString& file) {
    QString aside = file + QStringLiteral(".damaged");
    for (int number = 2; QFile::exists(aside); ++number)
        aside = QStringLiteral("%1.damaged-%2").arg(file).arg(number);
    if (!QFile::rename(file, aside)) return {};
    // A new database must not take these for its own.
    for (const char* beside : {"-journal", "-wal", "-shm"}) {
        const QLatin1StringView suffix(beside);
        if (QFile::exists(file + suffix)) QFile::rename(file + suffix, aside + suffix);
    }
    return aside;
}

bool DatabaseFile::synchronize(const QString& path) {
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    const bool isDone = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return isDone;
}
