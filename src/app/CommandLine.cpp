#include "app/CommandLine.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QUrl>

#include <array>

namespace {

/// Exit code for a command line that can't be used.
constexpr int usageError = 2;

CommandLineExit wrong(const QString& sentence) {
    return {QStringLiteral("velmora: %1 (see velmora --help)").arg(sentence), usageError};
}

std::optional<QSize> readSize(const QString& text) {
    static const QRegularExpression form(QStringLiteral("^(\\d{1,5})x(\\d{1,5})$"));
    const auto match = form.match(text);
    if (!match.hasMatch()) return std::nullopt;
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    return size.isEmpty() ? std::nullopt : std::optional(size);
}

/// File managers hand over places as URLs.
QStringList absolute(QStringList paths) {
    for (QString& path : paths) {
        const QString local = path.startsWith(u"file:") ? QUrl(path).toLocalFile() : QString();
        if (!local.isEmpty()) path = local;
        path = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    }
    return paths;
}

struct Options {
    QCommandLineOption help{
        {QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help.")};
    QCommandLineOption version{
        {QStringLiteral("v"), QStringLiteral("version")}, QStringLiteral("Show the version.")};
    QCommandLineOption profile{
        QStringLiteral("profile"),
        QStringLiteral("Keep catalogue and settings in DIR instead of your own places."),
        QStringLiteral("DIR")};
    QCommandLineOption add{
        QStringLiteral("add"),
        QStringLiteral("Add DIR to the sidebar, unless it is there already, and select it. May be "
                       "given several times."),
        QStringLiteral("DIR")};
    QCommandLineOption untilIdle{
        QStringLiteral("until-idle"),
        QStringLiteral("Quit when no work is pending in the background.")};
    QCommandLineOption screenshot{
        QStringLiteral("screenshot"),
        QStringLiteral("With --until-idle: save a picture of the window just before quitting."),
        QStringLiteral("FILE.png")};
    QCommandLineOption size{
        QStringLiteral("size"), QStringLiteral("Size of the window, such as 1280x800."),
        QStringLiteral("WxH")};
    QCommandLineOption stats{
        QStringLiteral("stats"),
        QStringLiteral("At exit write counts and timings as JSON to FILE (\"-\": standard "
                       "output)."),
        QStringLiteral("FILE")};
    QCommandLineOption state{
        QStringLiteral("state"),
        QStringLiteral("Print what the program that runs already shows, as JSON, and end.")};
    QCommandLineOption exportMarks{
        QStringLiteral("export-marks"),
        QStringLiteral("Write stars, flags, tags and rotations of all photographs to FILE (\"-\": "
                       "standard output), a JSON object in each line, and end."),
        QStringLiteral("FILE")};
    QCommandLineOption importMarks{
        QStringLiteral("import-marks"),
        QStringLiteral("Read such lines from FILE (\"-\": standard input), set what they say, and "
                       "end. What a line leaves out stays; 0, false and an empty list clear."),
        QStringLiteral("FILE")};
    QCommandLineOption theme{
        QStringLiteral("theme"),
        QStringLiteral("Use the \"light\" or \"dark\" colours instead of the desktop's choice."),
        QStringLiteral("NAME")};
    QCommandLineOption fullScreen{
        QStringLiteral("fullscreen"), QStringLiteral("Show the window on the whole screen.")};
    QCommandLineOption slideshow{
        QStringLiteral("slideshow"),
        QStringLiteral("Play what is opened as a slideshow; without paths, what was shown last.")};
    QCommandLineOption service{
        QStringLiteral("service"),
        QStringLiteral("Wait for a call over the message bus of the session and do what it asks, "
                       "as desktops start the program.")};
};

/// The toolkit asks an application for its name; it needs no display.
QString helpText(const QCommandLineParser& parser, const QStringList& arguments) {
    if (QCoreApplication::instance()) return parser.helpText();
    QByteArray name = arguments.value(0).toLocal8Bit();
    int count = 1;
    std::array<char*, 2> values{name.data(), nullptr};
    const QCoreApplication early(count, values.data());
    return parser.helpText();
}

} // namespace

QStringList restartArguments(const CommandLineOptions& options) {
    QStringList arguments;
    if (!options.profile.isEmpty()) arguments << QStringLiteral("--profile") << options.profile;
    if (options.dark) {
        arguments << QStringLiteral("--theme")
                  << (*options.dark ? QStringLiteral("dark") : QStringLiteral("light"));
    }
    return arguments;
}

std::variant<CommandLineOptions, CommandLineExit> parseCommandLine(const QStringList& arguments) {
    const Options known;
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Velmora, a photo browser and organiser."));
    parser.addOptions(
        {known.help, known.version, known.profile, known.add, known.untilIdle, known.screenshot,
         known.size, known.state, known.stats, known.exportMarks, known.importMarks, known.theme,
         known.fullScreen, known.slideshow, known.service});
    parser.addPositionalArgument(
        QStringLiteral("path"), QStringLiteral("Files and folders to open."),
        QStringLiteral("[path…]"));

    if (!parser.parse(arguments)) return wrong(parser.errorText());
    if (parser.isSet(known.help)) return CommandLineExit{helpText(parser, arguments)};
    if (parser.isSet(known.version)) {
        return CommandLineExit{QStringLiteral("Velmora %1").arg(QStringLiteral(VELMORA_VERSION))};
    }

    // Nobody means the present folder by a name that a script left empty.
    if ((parser.positionalArguments() + parser.values(known.add)).contains(QString()))
        return wrong(QStringLiteral("a path is empty"));
    CommandLineOptions options;
    options.paths = absolute(parser.positionalArguments());
    options.add = absolute(parser.values(known.add));
    options.untilIdle = parser.isSet(known.untilIdle);
    options.screenshot = parser.value(known.screenshot);
    options.stats = parser.value(known.stats);
    options.state = parser.isSet(known.state);
    options.isFullScreen = parser.isSet(known.fullScreen);
    options.isSlideshow = parser.isSet(known.slideshow);
    options.isService = parser.isSet(known.service);
    options.exportMarks = parser.value(known.exportMarks);
    options.importMarks = parser.value(known.importMarks);
    for (const QCommandLineOption* option : {&known.exportMarks, &known.importMarks}) {
        if (parser.isSet(*option) && parser.value(*option).isEmpty())
            return wrong(QStringLiteral("--%1 needs a file").arg(option->names().constFirst()));
    }
    if (!options.exportMarks.isEmpty() && !options.importMarks.isEmpty())
        return wrong(QStringLiteral("--export-marks and --import-marks don't go together"));
    if (parser.isSet(known.profile)) {
        options.profile = absolute({parser.value(known.profile)}).constFirst();
        if (parser.value(known.profile).isEmpty()) {
            return wrong(QStringLiteral("--profile needs a folder"));
        }
    }
    if (parser.isSet(known.size)) {
        const auto size = readSize(parser.value(known.size));
        if (!size) {
            return wrong(
                QStringLiteral("\"%1\" is no size such as 1280x800").arg(parser.value(known.size)));
        }
        options.size = *size;
    }
    if (options.isService && !(options.paths.isEmpty() && options.add.isEmpty()))
        return wrong(QStringLiteral("--service takes no paths: the call names them"));
    if (parser.isSet(known.screenshot) && !options.untilIdle) {
        return wrong(QStringLiteral("--screenshot goes with --until-idle"));
    }
    if (parser.isSet(known.theme)) {
        const QString name = parser.value(known.theme);
        if (name != u"light" && name != u"dark") {
            return wrong(QStringLiteral("\"%1\" is neither \"light\" nor \"dark\"").arg(name));
        }
        options.dark = name == u"dark";
    }
    return options;
}
