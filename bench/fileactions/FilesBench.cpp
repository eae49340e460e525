// What copies cost: 1,000 photographs of 4 MB against `cp -a` of the same, on the disk of the
// folder in VELMORA_BENCH_FOLDER, else of the temporary files. An argument scales their number:
// 0.05 is quick.

#include "fileactions/Transfers.h"
#include "support/Ratio.h"
#include "support/Require.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdlib>
#include <random>

#include <unistd.h>

using bench::require;

namespace {

constexpr int photographs = 1000;
constexpr qsizetype photographSize = 4'000'000;
constexpr int rounds = 3;
/// Copies are not synced, as those of `cp` are not.
constexpr double target = 1.15;

} // namespace

int main(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    const double scale = argumentCount > 1 ? std::atof(arguments[1]) : 1.0;
    const int count = std::max(1, static_cast<int>(photographs * scale));
    const QString place = qEnvironmentVariable("VELMORA_BENCH_FOLDER", QDir::tempPath());
    const QTemporaryDir folder(place + QStringLiteral("/velmora-files-XXXXXX"));
    const QString from = folder.filePath(QStringLiteral("from"));
    const QString to = folder.filePath(QStringLiteral("to"));
    require(QDir().mkpath(from), "making the folder");
    std::vector<QByteArray> paths;
    QByteArray content(photographSize, Qt::Uninitialized);
    std::mt19937 random(5);
    for (char& c : content)
        c = static_cast<char>(random());
    for (int number = 0; number < count; ++number) {
        QFile file(from + QStringLiteral("/IMG_%1.jpg").arg(number));
        require(
            file.open(QIODevice::WriteOnly) && file.write(content) == photographSize, "writing");
        paths.push_back(QFile::encodeName(file.fileName()));
    }
    const auto prepare = [&to] {
        require(QDir(to).removeRecursively() && QDir().mkpath(to), "emptying the folder");
        // Else whoever comes second waits for what the first has left to be written.
        ::sync();
    };
    const auto byCp = [&] {
        prepare();
        return bench::millisecondsOf([&] {
            require(
                QProcess::execute(
                    QStringLiteral("cp"),
                    {QStringLiteral("-a"), from + QStringLiteral("/."), to}) == 0,
                "cp");
        });
    };
    const auto byUs = [&] {
        prepare();
        bench::Transfers transfers(folder);
        const auto plan = fileactions::planTransfer(
            fileactions::TransferPlan::Kind::Copy, paths, QFile::encodeName(to));
        return bench::millisecondsOf(
            [&] { require(transfers.run(plan) == paths.size(), "copying"); });
    };
    const bool isMet =
        bench::printRatio("copies of photographs against cp -a", rounds, byCp, byUs, target);
    return isMet ? 0 : 1;
}
