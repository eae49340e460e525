#include "app/Statistics.h"

#include "platform/tasks/MainThread.h"

#include <QFile>
#include <QJsonDocument>

#include <cmath>
#include <cstdio>

#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

namespace {

double now() {
    timespec time{};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

/// Field 22 of /proc/self/stat: clock ticks since boot, hundredths of a second here.
double processStart() {
    QFile file(QStringLiteral("/proc/self/stat"));
    if (!file.open(QIODevice::ReadOnly)) return now();
    const QByteArray bytes = file.readAll();
    // The second field, the program's name, may hold anything but ends with the last ")".
    const QByteArrayList fields = bytes.mid(bytes.lastIndexOf(')') + 2).split(' ');
    constexpr int startTime = 22 - 3;
    if (fields.size() <= startTime) return now();
    return fields[startTime].toDouble() * 1e3 / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

} // namespace

double Statistics::sinceProcessStart() {
    static const double start = processStart();
    return now() - start;
}

void Statistics::set(const QString& name, double value) {
    platform::assertMainThread();
    _figures.insert(name, std::round(value * 100) / 100);
}

void Statistics::markOnce(const QString& name) {
    if (!_figures.contains(name)) set(name, sinceProcessStart());
}

bool Statistics::write(const QString& file) {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    set(QStringLiteral("peak_rss_kib"), static_cast<double>(usage.ru_maxrss));
    const QByteArray json = QJsonDocument(_figures).toJson(QJsonDocument::Compact) + '\n';
    QFile output(file);
    const bool opened = file == u"-" ? output.open(stdout, QIODevice::WriteOnly)
                                     : output.open(QIODevice::WriteOnly | QIODevice::Truncate);
    return opened && output.write(json) == json.size() && output.flush();
}
