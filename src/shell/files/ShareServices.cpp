#include "platform/desktop/DesktopPrograms.h"
#include "platform/desktop/MailProgram.h"
#include "platform/program/LocalizedTexts.h"
#include "shell/files/ShareCommands.h"

#include <QDBusConnection>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <utility>

using platform::localizedString;

namespace {

QIcon iconOf(const QString& name) {
    return QFileInfo(name).isAbsolute() ? QIcon(name) : QIcon::fromTheme(name);
}

ShareService serviceOf(const platform::DesktopPrograms::Program& program) {
    return {
        .title = program.name,
        .image = iconOf(program.icon),
        .performWithItems =
            [program](const QStringList& paths, const std::function<void(bool)>& done) {
                done(platform::DesktopPrograms::open(program, paths));
            },
        .isProgram = true};
}

/// Programs that are no choice for a type of file, but send any.
struct Sender {
    QStringView program;
    QStringView text;
    QStringView icon;
};
constexpr Sender senders[] = {
    {u"bluetooth-sendto", u"ShareBluetooth", u"bluetooth"},
    {u"blueman-sendto", u"ShareBluetooth", u"bluetooth"},
    {u"kdeconnect-handler", u"ShareDevice", u"kdeconnect"},
};

} // namespace

std::vector<ShareService> desktopShareServices(const QStringList& mimeTypes) {
    std::vector<ShareService> services;
    for (const auto& program : platform::DesktopPrograms::programsFor(mimeTypes))
        services.push_back(serviceOf(program));
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (platform::MailProgram::isThere(bus)) {
        services.push_back(
            {.title = localizedString(u"ShareMail"),
             .image = QIcon::fromTheme(QStringLiteral("mail-send")),
             .performWithItems = [bus](const QStringList& paths, std::function<void(bool)> done) {
                 platform::MailProgram::compose(bus, paths, std::move(done));
             }});
    }
    QStringView last;
    for (const Sender& sender : senders) {
        const QString program = QStandardPaths::findExecutable(sender.program.toString());
        if (program.isEmpty() || sender.text == last) continue;
        last = sender.text;
        services.push_back(
            {.title = localizedString(sender.text),
             .image = QIcon::fromTheme(sender.icon.toString()),
             .performWithItems =
                 [program](const QStringList& paths, const std::function<void(bool)>& done) {
                     done(QProcess::startDetached(program, paths));
                 }});
    }
    return services;
}
