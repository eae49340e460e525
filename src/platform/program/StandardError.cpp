#include "platform/program/StandardError.h"

#include <unistd.h>

namespace platform {

void complain(const QString& sentence) {
    QString line = sentence;
    line.replace(u'\n', u' ');
    const QByteArray bytes = "velmora: " + line.toLocal8Bit() + '\n';
    // One write, so that lines of several threads or processes never mix.
    [[maybe_unused]] const auto written =
        ::write(STDERR_FILENO, bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

} // namespace platform
