#include "app/ApplicationController.h"
#include "app/CatalogueFiles.h"
#include "app/CatalogueHealth.h"
#include "app/CatalogueWait.h"
#include "app/CommandLine.h"
#include "app/DamagedCatalogue.h"
#include "app/DesktopService.h"
#include "app/EarlyStart.h"
#include "app/IdleWatch.h"
#include "app/MarksCommand.h"
#include "app/OpenedPaths.h"
#include "app/PaintWatch.h"
#include "app/ProgramState.h"
#include "app/ResponseTime.h"
#include "app/ScanStatistics.h"
#include "app/SessionManagement.h"
#include "app/SingleInstance.h"
#include "app/Statistics.h"
#include "app/TerminationSignals.h"
#include "app/TextLanguage.h"
#include "app/ThemeControl.h"
#include "browser/PBImageBrowserView.h"
#include "codec/process/DecoderProcess.h"
#include "core/Application.h"
#include "platform/desktop/SessionBus.h"
#include "platform/desktop/WindowActivation.h"
#include "platform/files/PathNames.h"
#include "platform/program/DescriptorLimit.h"
#include "platform/program/RuntimeFolder.h"
#include "platform/program/StandardError.h"
#include "platform/program/StandardFolders.h"
#include "platform/tasks/ExitDeadline.h"
#include "platform/tasks/MainLoop.h"
#include "shell/PBMainWindowController.h"
#include "shell/large/LargeView.h"
#include "shell/large/SlideshowStart.h"
#include "viewer/PBImageView.h"

#include <QApplication>
#include <QIcon>
#include <QLoggingCategory>
#include <QMainWindow>
#include <QProcess>
#include <QTimer>
#include <QWindow>

#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

#include <unistd.h>

namespace {

constexpr int failure = 1;
/// After the loop: the queues end within milliseconds, unless a disk holds them.
constexpr std::chrono::milliseconds farewell{1000};
/// Of a desktop that has this process started.
constexpr std::chrono::seconds longestWaitForCall{10};

/// The command line without the few options that the toolkit takes for itself.
QStringList ownArguments(std::span<char*> arguments) {
    QStringList own;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const QByteArrayView argument(arguments[i]);
        if (argument == "-platform" || argument == "-style" || argument == "-session") {
            ++i;
        } else {
            own.append(QString::fromLocal8Bit(argument));
        }
    }
    return own;
}

/// Without a display the toolkit would end the process with a core dump.
bool hasDisplay(std::span<char*> arguments) {
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (!qEnvironmentVariableIsEmpty(variable)) return true;
    }
    return std::ranges::any_of(
        arguments, [](const char* argument) { return QByteArrayView(argument) == "-platform"; });
}

/// Outside of a session of the desktop there may be no runtime folder; the toolkit would make one,
/// and say so in a warning each time.
void provideRuntimeFolder() {
    if (!qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) return;
    const QByteArray folder = platform::RuntimeFolder::path();
    if (!folder.isEmpty()) qputenv("XDG_RUNTIME_DIR", folder);
}

int leave(const CommandLineExit& exit) {
    const QByteArray text = exit.text.trimmed().toLocal8Bit() + '\n';
    std::fputs(text.constData(), exit.code == 0 ? stdout : stderr);
    return exit.code;
}

int printState() {
    const auto state = SingleInstance::stateOf(platform::StandardFolders::dataFolder());
    if (!state) {
        platform::complain(QStringLiteral("no Velmora that answers has the catalogue in %1 open")
                               .arg(platform::StandardFolders::dataFolder()));
        return failure;
    }
    std::fwrite(state->constData(), 1, static_cast<std::size_t>(state->size()), stdout);
    return 0;
}

bool saveScreenshot(QWidget& window, const QString& file) {
    if (window.grab().save(file, "PNG")) return true;
    platform::complain(QStringLiteral("the picture %1 can't be written").arg(file));
    return false;
}

/// From where desktops find it, too; some of them ask each window for its own.
QIcon applicationIcon() {
    QIcon icon;
    for (const int side : {32, 48, 128}) {
        icon.addFile(
            platform::StandardFolders::sharedFile(
                QStringLiteral("../icons/hicolor/%1x%1/apps/%2.png")
                    .arg(side)
                    .arg(PBUtilities::applicationId())),
            {side, side});
    }
    return icon;
}

/// What stands on threads, descriptors and signals, in the order in which they want each other.
class Toolkit {
public:
    /// `prepared` is called before the application object is made.
    Toolkit(int& argc, char** argv, const std::function<void()>& prepared = {})
        : _application((prepare(prepared), argc), argv) {
        QGuiApplication::setWindowIcon(applicationIcon());
        QObject::connect(
            &_signals, &TerminationSignals::received, &_application, &QCoreApplication::quit);
    }

private:
    static void prepare(const std::function<void()>& prepared) {
        // Profiles that the toolkit can't read go to the colour engine as they are.
        QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.icc.warning=false"));
        platform::raiseDescriptorLimit();
        TerminationSignals::block();
        if (prepared) prepared();
    }

    QApplication _application;
    TerminationSignals _signals;
    platform::MainLoop _loop;
};

/// Does what the first start asks, in a window that was just made, or a later one.
bool perform(ApplicationController& controller, const SingleInstance::Request& request) {
    PBMainWindowController& window = controller.mainWindowController();
    if (request.isFullScreen) window.fillScreen();
    const bool allAdded = controller.addFolders(request.add);
    controller.applicationOpenFiles(request.paths);
    controller.tellUnopened(request.faults);
    if (request.isSlideshow) window.slideshowStart().begin();
    return allAdded && request.faults.empty();
}

void performLater(ApplicationController& controller, const SingleInstance::Request& request) {
    QMainWindow& window = controller.mainWindowController().window();
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    platform::bringToFront(*window.windowHandle(), request.activation);
    (void)perform(controller, request);
}

/// What is asked of the program while it asks the user something himself, and has no window yet.
class EarlyRequests {
public:
    /// Both outlive this object; there may be no service.
    EarlyRequests(const SingleInstance& instance, const DesktopService* service) {
        const auto keep = [this](const SingleInstance::Request& request) {
            _requests.push_back(request);
        };
        QObject::connect(&instance, &SingleInstance::requested, &_context, keep);
        if (service) QObject::connect(service, &DesktopService::requested, &_context, keep);
    }

    [[nodiscard]] const std::vector<SingleInstance::Request>& requests() const { return _requests; }

private:
    std::vector<SingleInstance::Request> _requests;
    const QObject _context;
};

/// Shows the window with what the request asks for, runs the loop and ends everything; answers the
/// exit code, and the arguments to start with anew where that is wanted.
int runApplication(
    const CommandLineOptions& options, const SingleInstance::Request& first,
    SingleInstance& instance, std::unique_ptr<DesktopService> service, EarlyStart early,
    std::optional<QStringList>* restart) {
    Statistics statistics;
    if (!early.decoders()) early.makeDecoders(first.paths);
    early.beginToDecode();
    ApplicationController controller(std::move(early));
    useTextLanguage(controller.preferences());
    const ThemeControl theme(controller.preferences(), options.dark);

    std::optional<EarlyRequests> earlyRequests(std::in_place, instance, service.get());
    // Nobody is there to answer a run that ends by itself.
    const QString folder = platform::StandardFolders::dataFolder();
    const QString catalogue = platform::pathInFolder(folder, CatalogueFiles::files);
    if (!CatalogueWait::settle(catalogue)) return failure;
    CatalogueHealth::repairIfWanted(catalogue);
    CatalogueHealth::repairIfWanted(platform::pathInFolder(folder, CatalogueFiles::thumbnails));
    if (!options.untilIdle && !DamagedCatalogue::settle(catalogue, DamagedCatalogue::ask))
        return failure;

    controller.setRestart([restart, &options, &controller] {
        *restart = restartArguments(options) + controller.mainWindowController().openedOnShow();
        QCoreApplication::quit();
    });
    controller.awakeFromNib();
    QMainWindow& window = controller.mainWindowController().window();
    if (options.size.isValid()) window.resize(options.size);
    if (!first.paths.isEmpty()) controller.setIgnoreSelectLastFolder();
    // Before it is shown, so that it doesn't change its size at once.
    if (first.isFullScreen) controller.mainWindowController().fillScreen();
    controller.applicationDidFinishLaunching();
    ResponseTime responseTime;
    const auto listen = [&] {
        QObject::connect(
            service.get(), &DesktopService::requested, &window,
            [&](const SingleInstance::Request& request) { performLater(controller, request); });
    };
    const std::vector<SingleInstance::Request> waiting = earlyRequests->requests();
    earlyRequests.reset();
    if (service) listen();
    std::optional<PaintWatch> photographWatch;
    std::optional<PaintWatch> cellsWatch;
    if (!options.stats.isEmpty()) {
        PBImageView& view = controller.mainWindowController().largeView().controller().imageView();
        photographWatch.emplace(view, [&] {
            using Painted = PBImageView::Painted;
            const bool isSharp =
                view.painted() == Painted::FitIn || view.painted() == Painted::Original;
            if (isSharp) statistics.markOnce(QStringLiteral("first_photograph_ms"));
            return isSharp;
        });
        auto& cells = *window.findChild<PBImageBrowserView*>();
        cellsWatch.emplace(cells, [&, wasWhole = false]() mutable {
            const bool isWhole = cells.isPictured();
            if (isWhole && !wasWhole) {
                statistics.set(
                    QStringLiteral("all_cells_pictured_ms"), Statistics::sinceProcessStart());
            }
            wasWhole = isWhole;
            return false;
        });
    }
    // The events of showing come first in line; when they are done, the window is painted.
    QTimer::singleShot(0, &window, [&] {
        statistics.markOnce(QStringLiteral("first_window_ms"));
        if (!options.stats.isEmpty()) responseTime.start();
        // The desktop means the user's own catalogue, and a program that stays.
        if (!service && options.profile.isEmpty() && !options.untilIdle) {
            service = std::make_unique<DesktopService>(platform::sessionBus());
            listen();
            service->takeName();
        }
        // The toolkit looks for it in the environment only.
        if (options.isService) platform::bringToFront(*window.windowHandle(), first.activation);
        platform::forgetActivation();
    });
    QObject::connect(
        &instance, &SingleInstance::requested, &window,
        [&](const SingleInstance::Request& request) { performLater(controller, request); });
    const SessionManagement session(options, controller.mainWindowController());

    instance.setStateSource([&] { return programState(controller); });
    MarksCommand::answerLaterStarts(instance, controller.marks());

    int code = perform(controller, first) ? 0 : failure;
    for (const SingleInstance::Request& request : waiting)
        performLater(controller, request);
    IdleWatch idle([&] { return controller.isIdle(); });
    QObject::connect(&idle, &IdleWatch::becameIdle, &window, [&] {
        responseTime.stop(); // taking the picture is no part of the visit
        if (!options.screenshot.isEmpty() && !saveScreenshot(window, options.screenshot)) {
            code = failure;
        }
        QCoreApplication::quit();
    });
    if (options.untilIdle) idle.start();

    const int loopCode = QCoreApplication::exec();
    service.reset();
    instance.setStateSource({});
    instance.setMarksSource({}, {});
    responseTime.stop();
    statistics.set(QStringLiteral("longest_response_ms"), responseTime.longest());
    addScanStatistics(statistics, controller.scanPipeline());
    if (!options.stats.isEmpty() && !statistics.write(options.stats)) {
        platform::complain(QStringLiteral("the figures can't be written to %1").arg(options.stats));
        code = failure;
    }
    const platform::ExitDeadline deadline(
        farewell, [exitCode = loopCode != 0 ? loopCode : code] { ::_exit(exitCode); });
    photographWatch.reset();
    cellsWatch.reset();
    controller.applicationWillTerminate();
    return loopCode != 0 ? loopCode : code;
}

} // namespace

int main(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (const auto code = codec::process::runIfDecoderProcess(arguments)) return *code;
    QCoreApplication::setApplicationName(QStringLiteral("Velmora"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELMORA_VERSION));
    QGuiApplication::setDesktopFileName(PBUtilities::applicationId());

    const auto parsed = parseCommandLine(ownArguments(arguments));
    if (const auto* exit = std::get_if<CommandLineExit>(&parsed)) return leave(*exit);
    const auto& options = std::get<CommandLineOptions>(parsed);
    provideRuntimeFolder();
    platform::StandardFolders::setProfile(options.profile);
    if (options.state) return printState();
    if (!options.exportMarks.isEmpty() || !options.importMarks.isEmpty()) {
        const QCoreApplication application(argc, argv);
        const platform::MainLoop loop;
        return MarksCommand::run(options);
    }
    if (!hasDisplay(arguments)) {
        platform::complain(
            QStringLiteral("there is no display; for a picture of the window without one, run: "
                           "QT_QPA_PLATFORM=offscreen velmora --until-idle --screenshot FILE.png"));
        return failure;
    }

    SingleInstance::Request request{.paths = {}, .add = options.add};
    request.paths = openablePaths(options.paths, [&request](const UnopenedPath& unopened) {
        platform::complain(sentenceOf(unopened));
        request.faults.push_back(unopened);
    });
    request.isFullScreen = options.isFullScreen;
    request.isSlideshow = options.isSlideshow;
    request.activation = platform::activationOfStart();
    std::optional<Toolkit> toolkit;
    std::unique_ptr<DesktopService> service;
    if (options.isService) {
        toolkit.emplace(argc, argv);
        const QDBusConnection bus = platform::sessionBus();
        if (!bus.isConnected()) {
            platform::complain(QStringLiteral("there is no message bus to wait for a call on"));
            return failure;
        }
        service = std::make_unique<DesktopService>(bus);
        auto call = service->firstCall(longestWaitForCall);
        if (!call) return 0;
        request = std::move(*call);
    }
    // Before there is an application object: what runs already has the time that this one saves.
    auto instance = std::make_unique<SingleInstance>();
    switch (instance->take(platform::StandardFolders::dataFolder(), request)) {
    case SingleInstance::Outcome::HandedOver:
        return request.faults.empty() ? 0 : failure;
    case SingleInstance::Outcome::NoAnswer:
        platform::complain(
            QStringLiteral("another Velmora has the catalogue in %1 open and does not answer")
                .arg(platform::StandardFolders::dataFolder()));
        return failure;
    case SingleInstance::Outcome::First:
        break;
    }

    EarlyStart early;
    if (!toolkit) toolkit.emplace(argc, argv, [&] { early.makeDecoders(request.paths); });
    instance->listen();
    std::optional<QStringList> restart;
    const int code =
        runApplication(options, request, *instance, std::move(service), std::move(early), &restart);
    instance.reset(); // the next one takes the catalogue
    if (restart) QProcess::startDetached(QCoreApplication::applicationFilePath(), *restart);
    return code;
}
