// From the start of the process with a photograph of 12 megapixels in the command line to that
// photograph sharp in its window, without a display: against a bare program that opens a window and
// shows the decoded file. With an empty catalogue (cold), and with one that has the photograph in a
// folder root with others (warm). And from the start of a second process to the photograph sharp in
// the program that runs, against the decode and what a second process may cost.

#include "app/SingleInstance.h"
#include "app/Statistics.h"
#include "codec/PBImageImporterManager.h"
#include "scan/PictureSets.h"
#include "support/Ratio.h"

#include <QApplication>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>

#include <cstdlib>
#include <limits>
#include <thread>

namespace {

constexpr int rounds = 5;

/// Shows the picture and says how long the process took for it.
class BareWindow final : public QWidget {
public:
    explicit BareWindow(QImage image) : _image(std::move(image)) {}

protected:
    void paintEvent(QPaintEvent*) override {
        const QSize size = _image.size().scaled(this->size(), Qt::KeepAspectRatio);
        QPainter(this).drawImage(
            0, 0, _image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        QTimer::singleShot(0, this, [] {
            std::printf("%f\n", Statistics::sinceProcessStart());
            QCoreApplication::quit();
        });
    }

private:
    const QImage _image;
};

int runBare(int argc, char** argv, const QString& file) {
    const QApplication application(argc, argv);
    const QSize screen = QGuiApplication::primaryScreen()->size();
    PBImageImporterManager importers;
    const auto importer = importers.imageImporterForImageURL(file);
    BareWindow window(importer->createImageWithMaxSize(
        static_cast<unsigned>(std::max(screen.width(), screen.height())), 0));
    window.resize(1180, 760);
    window.show();
    return QCoreApplication::exec();
}

QByteArray outputOf(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    if (!process.waitForFinished(-1) || process.exitCode() != 0) std::abort();
    return process.readAllStandardOutput();
}

QString program() {
    return QCoreApplication::applicationDirPath() + QStringLiteral("/velmora");
}

double bare(const QString& file) {
    return outputOf(QCoreApplication::applicationFilePath(), {QStringLiteral("--bare"), file})
        .trimmed()
        .toDouble();
}

double opened(const QString& file, const QString& profile) {
    const QByteArray stats = outputOf(
        program(), {QStringLiteral("--profile"), profile, QStringLiteral("--until-idle"),
                    QStringLiteral("--stats"), QStringLiteral("-"), file});
    const double time = QJsonDocument::fromJson(stats)
                            .object()[QLatin1StringView("first_photograph_ms")]
                            .toDouble();
    if (time <= 0) std::abort();
    return time;
}

/// By a second process, in the program that has the profile open. To ask it costs it some time,
/// too.
double openedInRunning(const QString& file, const QString& profile) {
    return bench::millisecondsOf([&] {
        outputOf(program(), {QStringLiteral("--profile"), profile, file});
        const QString name = QFileInfo(file).fileName();
        while (true) {
            const auto state = SingleInstance::stateOf(profile);
            if (!state) std::abort();
            const QJsonObject large =
                QJsonDocument::fromJson(*state).object()[QLatin1StringView("large")].toObject();
            const QString painted = large[QLatin1StringView("painted")].toString();
            const bool isSharp = painted == u"fitIn" || painted == u"original";
            if (isSharp && large[QLatin1StringView("image")] == name) return;
        }
    });
}

/// Whether each of the files is sharp within what it may take; none of them was opened before.
bool watchRunning(const QStringList& files, const QString& profile) {
    constexpr unsigned screenSide = 800; // of the toolkit's screen without a display
    constexpr double secondProcess = 75; // milliseconds
    constexpr double moreThanDecode = 1.15;
    QProcess running;
    running.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    running.start(program(), {QStringLiteral("--profile"), profile});
    if (!running.waitForStarted()) std::abort();
    while (!SingleInstance::stateOf(profile))
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    PBImageImporterManager importers;
    double decode = std::numeric_limits<double>::infinity();
    double subject = decode;
    for (const QString& file : files) {
        decode = std::min(decode, bench::millisecondsOf([&] {
                              bench::keep(
                                  importers.imageImporterForImageURL(file)->createImageWithMaxSize(
                                      screenSide, 0));
                          }));
        subject = std::min(subject, openedInRunning(file, profile));
    }
    running.terminate();
    running.waitForFinished();
    return bench::printFigure(
        "open a photograph, running: second process to sharp", subject, "ms",
        secondProcess + moreThanDecode * decode);
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (argc == 3 && QByteArrayView(argv[1]) == "--bare")
        return runBare(argc, argv, QString::fromLocal8Bit(argv[2]));
    const QCoreApplication application(argc, argv);
    const bench::PictureSet set{100, 10, bench::twelveMegapixelPicture, 85};
    const QStringList files = bench::filesBelow(set.folder());
    const QString file = files.value(50);
    const QTemporaryDir places;
    int profiles = 0;
    const auto cold = [&] { return opened(file, places.filePath(QString::number(++profiles))); };
    const QString known = places.filePath(QStringLiteral("known"));
    outputOf(
        program(), {QStringLiteral("--profile"), known, QStringLiteral("--until-idle"),
                    QStringLiteral("--add"), set.folder()});
    const auto floor = [&] { return bare(file); };
    bool met =
        bench::printRatio("open a photograph, cold: process to sharp", rounds, floor, cold, 2.0);
    met &= bench::printRatio(
        "open a photograph, warm: process to sharp", rounds, floor,
        [&] { return opened(file, known); }, 2.0);
    met &= watchRunning(files.first(rounds), known);
    return met ? 0 : 1;
}
