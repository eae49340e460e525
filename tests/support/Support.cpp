#include "support/Support.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDirIterator>
#include <QFileInfo>
#include <QImage>
#include <QRegularExpression>
#include <QTimer>

#include <ctime>

void PrintTo(const QString& text, std::ostream* stream) {
    *stream << '"' << text.toStdString() << '"';
}

namespace support {

bool spinUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline) {
    QDeadlineTimer timer(deadline);
    // Wakes a loop that has nothing to do, so that a condition set by another thread is seen.
    QTimer wake;
    wake.start(2);
    while (!condition()) {
        if (timer.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("can't write %s", qPrintable(path));
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writePicture(const QString& path, QSize size) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    if (!picture.save(path)) qFatal("can't write %s", qPrintable(path));
}

TimeZone::TimeZone(const char* zone) : _before(qgetenv("TZ")) {
    qputenv("TZ", zone);
    tzset();
}

TimeZone::~TimeZone() {
    if (_before.isNull())
        qunsetenv("TZ");
    else
        qputenv("TZ", _before);
    tzset();
}

QByteArray mutated(QByteArray bytes, std::mt19937& random) {
    const auto below = [&](qsizetype limit) {
        return qsizetype(random() % unsigned(std::max<qsizetype>(limit, 1)));
    };
    const unsigned way = random() % 4;
    if (way == 0) bytes.truncate(below(bytes.size()));
    if (way == 1) bytes.insert(below(bytes.size()), bytes.mid(below(bytes.size()), below(200)));
    if (bytes.isEmpty()) return "x";
    for (qsizetype count = below(12); count >= 0; --count) {
        constexpr char extremes[] = {'\0', '\x01', '\x7F', '\xFF'};
        const qsizetype at =
            below(random() % 2 == 0 ? std::min<qsizetype>(bytes.size(), 400) : bytes.size());
        bytes[at] = random() % 2 == 0 ? extremes[random() % 4] : static_cast<char>(random());
    }
    return bytes;
}

QSet<QString> namesInSources(const QString& folder, const QString& pattern) {
    const QRegularExpression expression(pattern);
    QSet<QString> names;
    QDirIterator files(folder, {u"*.cpp"_s}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        for (const auto& match : expression.globalMatch(QString::fromUtf8(readFile(files.next()))))
            names.insert(match.capturedTexts().mid(1).join(QString()));
    return names;
}

} // namespace support
