#include "platform/desktop/Wallpaper.h"

#include "platform/tasks/MainThread.h"

#include <QProcess>
#include <QUrl>

#include <memory>

namespace platform::Wallpaper {

namespace {

using Answered = std::function<void(Result)>;

/// Runs the lines one after the other; `done` gets whether the last went well, and what it wrote.
/// Those before it may set what only newer desktops have.
void run(
    const std::vector<QStringList>& lines, std::size_t index,
    const std::function<void(bool isGood, const QByteArray& output)>& done) {
    auto* process = new QProcess;
    const QStringList& line = lines[index];
    const auto end = std::make_shared<bool>(false);
    const auto finish = [=](bool isGood) {
        if (std::exchange(*end, true)) return;
        process->deleteLater();
        const QByteArray output = process->readAllStandardOutput();
        if (index + 1 < lines.size()) {
            run(lines, index + 1, done);
        } else {
            done(isGood, output);
        }
    };
    QObject::connect(process, &QProcess::errorOccurred, process, [finish] { finish(false); });
    QObject::connect(
        process, &QProcess::finished, process, [finish](int code, QProcess::ExitStatus status) {
            finish(code == 0 && status == QProcess::NormalExit);
        });
    process->start(line.constFirst(), line.mid(1));
}

/// As GLib reads texts (GVariant text format): a name may have marks of its own.
QString quoted(QString text) {
    text.replace(u'\\', QStringLiteral("\\\\")).replace(u'\'', QStringLiteral("\\'"));
    return u'\'' + text + u'\'';
}

void setByDesktop(const QString& desktop, const QString& path, const Answered& answered) {
    const std::vector<QStringList> lines = commandLines(desktop, path);
    if (lines.empty()) {
        answered(Result::Nobody);
        return;
    }
    const bool isXfce = lines.front().contains(QStringLiteral("xfce4-desktop"));
    run(lines, 0, [=](bool isGood, const QByteArray& output) {
        if (!isGood || !isXfce) {
            answered(isGood ? Result::Done : Result::Failed);
            return;
        }
        std::vector<QStringList> settings;
        for (const QByteArray& name : output.split('\n')) {
            if (!name.trimmed().endsWith("/last-image")) continue;
            settings.push_back(
                {QStringLiteral("xfconf-query"), QStringLiteral("-c"),
                 QStringLiteral("xfce4-desktop"), QStringLiteral("-p"),
                 QString::fromUtf8(name.trimmed()), QStringLiteral("-s"), path});
        }
        if (settings.empty()) {
            answered(Result::Failed);
            return;
        }
        run(settings, 0, [answered](bool isSet, const QByteArray&) {
            answered(isSet ? Result::Done : Result::Failed);
        });
    });
}

} // namespace

std::vector<QStringList> commandLines(const QString& desktop, const QString& path) {
    const QString url = QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded);
    const auto setting = [](const QString& schema, const QString& key, const QString& value) {
        return QStringList{
            QStringLiteral("gsettings"), QStringLiteral("set"), schema, key, quoted(value)};
    };
    const QStringList names = desktop.toLower().split(u':', Qt::SkipEmptyParts);
    const auto is = [&names](const auto&... any) {
        return (names.contains(QString(QLatin1StringView(any))) || ...);
    };
    if (is("x-cinnamon", "cinnamon"))
        return {setting(
            QStringLiteral("org.cinnamon.desktop.background"), QStringLiteral("picture-uri"), url)};
    if (is("mate"))
        return {setting(
            QStringLiteral("org.mate.background"), QStringLiteral("picture-filename"), path)};
    if (is("kde")) return {{QStringLiteral("plasma-apply-wallpaperimage"), path}};
    if (is("xfce"))
        return {
            {QStringLiteral("xfconf-query"), QStringLiteral("-c"), QStringLiteral("xfce4-desktop"),
             QStringLiteral("-l")}};
    if (is("gnome", "unity", "budgie", "pantheon")) {
        const QString schema = QStringLiteral("org.gnome.desktop.background");
        return {
            setting(schema, QStringLiteral("picture-uri-dark"), url),
            setting(schema, QStringLiteral("picture-uri"), url)};
    }
    return {};
}

void set(
    const QDBusConnection& bus, const QString& desktop, const QString& path,
    const QDBusUnixFileDescriptor& file, Answered answered) {
    assertMainThread();
    const QVariantMap options{
        {QStringLiteral("show-preview"), false},
        {QStringLiteral("set-on"), QStringLiteral("background")}};
    PortalRequest::call(
        bus, QStringLiteral("org.freedesktop.portal.Wallpaper"), QStringLiteral("SetWallpaperFile"),
        {QString(), QVariant::fromValue(file)}, options,
        [desktop, path, answered = std::move(answered)](PortalRequest::Answer answer) {
            switch (answer) {
            case PortalRequest::Answer::Done:
                answered(Result::Done);
                break;
            case PortalRequest::Answer::Cancelled:
                answered(Result::Cancelled);
                break;
            case PortalRequest::Answer::Failed:
            case PortalRequest::Answer::Nobody:
                setByDesktop(desktop, path, answered);
                break;
            }
        });
}

} // namespace platform::Wallpaper
