#include "shell/files/ShareServices.h"

#include "platform/desktop/MailProgram.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"

#include <QDBusConnection>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <optional>
#include <utility>

using platform::localizedString;
using platform::MainLoop;
using platform::PortalFiles;
using platform::Wallpaper::Result;

namespace {

/// Programs that are no choice for a type of file, but send any.
struct Sender {
    QStringView program;
    QStringView text;
    QStringView icon;
    bool takesSeveral; ///< else it is started for each file
};
constexpr Sender senders[] = {
    {u"bluetooth-sendto", u"ShareBluetooth", u"bluetooth", true},
    {u"blueman-sendto", u"ShareBluetooth", u"bluetooth", true},
    {u"kdeconnect-handler", u"ShareDevice", u"kdeconnect", false},
};

QIcon iconOf(const QString& name) {
    const QIcon icon = QFileInfo(name).isAbsolute() ? QIcon(name) : QIcon::fromTheme(name);
    return icon.isNull() ? QIcon::fromTheme(QStringLiteral("application-x-executable")) : icon;
}

} // namespace

ShareServices::ShareServices() {
    find({QStringLiteral("image/jpeg")}, [](const auto&) {});
}

ShareServices::~ShareServices() {
    _alive.reset();
    _queue.cancelAllOperations();
    _queue.waitUntilAllOperationsAreFinished();
}

template <typename Work, typename Then>
void ShareServices::inBackground(Work work, Then then) {
    platform::assertMainThread();
    _queue.addOperation(
        [alive = std::weak_ptr(_alive), work = std::move(work), then = std::move(then)] {
            auto result = work();
            MainLoop* loop = MainLoop::instance();
            if (!loop) return;
            loop->post(MainLoop::Mode::Common, [alive, then, result = std::move(result)] {
                if (!alive.expired()) then(result);
            });
        });
}

ShareServices::There ShareServices::look(const QStringList& mimeTypes) {
    There there;
    there.programs = platform::DesktopPrograms::programsFor(mimeTypes);
    there.hasMail = platform::MailProgram::isThere(QDBusConnection::sessionBus());
    for (std::size_t i = 0; i < std::size(senders); ++i) {
        const bool isOneThere =
            !there.senders.empty() && senders[there.senders.back().first].text == senders[i].text;
        const QString path = QStandardPaths::findExecutable(senders[i].program.toString());
        if (!isOneThere && !path.isEmpty()) there.senders.emplace_back(i, path);
    }
    return there;
}

void ShareServices::find(const QStringList& mimeTypes, const Found& found) {
    const QString key = mimeTypes.join(u' ');
    std::optional<There> told;
    if (const auto known = _known.constFind(key); known != _known.cend()) told = *known;
    if (told) found(services(*told));
    inBackground(
        [mimeTypes] { return look(mimeTypes); },
        [this, key, told, found](const There& there) {
            _known.insert(key, there);
            // Compared with what this one was told: others may have asked meanwhile.
            if (told != there) found(services(there));
        });
}

std::vector<ShareService> ShareServices::services(const There& there) {
    std::vector<ShareService> services;
    for (const auto& program : there.programs) {
        services.push_back(
            {.title = program.name,
             .image = iconOf(program.icon),
             .performWithItems =
                 [this, program](const QStringList& paths, std::function<void(bool)> done) {
                     inBackground(
                         [program, paths] {
                             return platform::DesktopPrograms::open(program, paths);
                         },
                         std::move(done));
                 },
             .isProgram = true});
    }
    if (there.hasMail) {
        services.push_back(
            {.title = localizedString(u"ShareMail"),
             .image = iconOf(QStringLiteral("mail-send")),
             .performWithItems =
                 [this](const QStringList& paths, const std::function<void(bool)>& done) {
                     inBackground(
                         [paths] { return platform::openForPortal(paths); },
                         [paths, done](const std::optional<PortalFiles>& files) {
                             if (!files) return done(false);
                             platform::MailProgram::compose(
                                 QDBusConnection::sessionBus(), paths, *files, done);
                         });
                 }});
    }
    for (const auto& [index, path] : there.senders) {
        services.push_back(
            {.title = localizedString(senders[index].text),
             .image = iconOf(senders[index].icon.toString()),
             .performWithItems = [this, program = path, takesSeveral = senders[index].takesSeveral](
                                     const QStringList& paths, std::function<void(bool)> done) {
                 inBackground(
                     [program, paths, takesSeveral] {
                         if (takesSeveral) return QProcess::startDetached(program, paths);
                         return std::ranges::all_of(paths, [&program](const QString& file) {
                             return QProcess::startDetached(program, {file});
                         });
                     },
                     std::move(done));
             }});
    }
    return services;
}

void ShareServices::setDesktopImage(const QString& path, std::function<void(Result)> answered) {
    inBackground(
        [path] { return platform::openForPortal({path}); },
        [path, answered = std::move(answered)](const std::optional<PortalFiles>& files) {
            if (!files || files->isEmpty()) return answered(Result::Failed);
            platform::Wallpaper::set(
                QDBusConnection::sessionBus(),
                QString::fromLocal8Bit(qgetenv("XDG_CURRENT_DESKTOP")), path, files->constFirst(),
                answered);
        });
}
