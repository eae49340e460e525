#include "scan/ProgramVisit.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

Visit run(const PictureSet& set, const QString& profile, bool isFirst) {
    QStringList arguments{
        QStringLiteral("--profile"), profile, QStringLiteral("--until-idle"),
        QStringLiteral("--stats"), QStringLiteral("-")};
    if (isFirst) arguments += {QStringLiteral("--add"), set.folder()};
    QElapsedTimer whole;
    whole.start();
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QCoreApplication::applicationDirPath() + QStringLiteral("/velmora"), arguments);
    if (!program.waitForFinished(-1) || program.exitCode() != 0) std::abort();
    const auto elapsed = static_cast<double>(whole.elapsed());
    const QJsonObject stats = QJsonDocument::fromJson(program.readAllStandardOutput()).object();
    const auto figure = [&](const char* name) {
        return stats[QLatin1StringView(name)].toDouble(std::nan(""));
    };
    if (figure("items") != set.pictures) {
        std::fprintf(stderr, "%g of %d pictures are shown\n", figure("items"), set.pictures);
        std::abort();
    }
    const double begin = figure("scan_begin_ms");
    return {
        figure("first_window_ms"),
        begin + figure("first_shown_ms"),
        begin + figure("last_shown_ms"),
        figure("all_cells_pictured_ms"),
        figure("thumbnails_built") / figure("thumbnails_done_ms") * 1000,
        figure("longest_response_ms"),
        figure("peak_rss_kib") / 1024,
        elapsed};
}

} // namespace

QString profileOf(const PictureSet& set) {
    return set.folder() + QStringLiteral(".profile");
}

Visit visitFirst(const PictureSet& set) {
    QDir(profileOf(set)).removeRecursively();
    return run(set, profileOf(set), true);
}

Visit visitAgain(const PictureSet& set, int rounds) {
    Visit least = run(set, profileOf(set), false);
    for (int round = 1; round < rounds; ++round) {
        const Visit next = run(set, profileOf(set), false);
        least.window = std::min(least.window, next.window);
        least.first = std::min(least.first, next.first);
        least.complete = std::min(least.complete, next.complete);
        least.pictured = std::min(least.pictured, next.pictured);
        least.longestResponse = std::min(least.longestResponse, next.longestResponse);
        least.peak = std::min(least.peak, next.peak);
        least.whole = std::min(least.whole, next.whole);
    }
    return least;
}

} // namespace bench
