#include "platform/program/LocalizedTexts.h"

#include "platform/program/HarmlessText.h"

#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QRegularExpression>

// Resources of a static library have to be named once to be linked in; the macro must stand outside
// of any namespace.
static void initializeTexts() {
    Q_INIT_RESOURCE(texts);
}

namespace platform {

namespace {

using Table = QHash<QString, QString>;

Table loadTable(const QString& language) {
    Table table;
    QDirIterator files(QStringLiteral(":/texts/") + language);
    while (files.hasNext()) {
        QFile file(files.next());
        if (!file.open(QIODevice::ReadOnly)) continue;
        const QJsonObject texts = QJsonDocument::fromJson(file.readAll()).object();
        for (auto text = texts.begin(); text != texts.end(); ++text) {
            table.insert(text.key(), text.value().toString());
        }
    }
    return table;
}

const Table& table() {
    static const Table loaded = [] {
        initializeTexts();
        return loadTable(QStringLiteral("en"));
    }();
    return loaded;
}

} // namespace

QString localizedString(QStringView key) {
    const QString text = key.toString();
    return table().value(text, text);
}

QString localizedFormat(QStringView key, std::initializer_list<PBValue> arguments) {
    return formatText(localizedString(key), arguments);
}

QString formatText(QStringView format, std::initializer_list<PBValue> arguments) {
    static const QRegularExpression placeholder(
        QStringLiteral("%(?:(\\d+)\\$)?(?:(@)|l*(d)|(?:\\.(\\d+))?(f)|(%))"));
    const QString text = format.toString();
    const QLocale locale;
    QString result;
    qsizetype end = 0;
    std::size_t next = 0;
    for (auto match : placeholder.globalMatch(text)) {
        result += QStringView(text).mid(end, match.capturedStart() - end);
        end = match.capturedEnd();
        if (match.hasCaptured(6)) {
            result += u'%';
            continue;
        }
        const std::size_t index =
            match.hasCaptured(1) ? match.captured(1).toULongLong() - 1 : next++;
        if (index >= arguments.size()) {
            result += match.captured();
            continue;
        }
        const PBValue& argument = *(arguments.begin() + index);
        if (match.hasCaptured(2)) {
            result += isolatedText(argument.toText());
        } else if (match.hasCaptured(3)) {
            result += locale.toString(argument.toInteger());
        } else {
            const int places = match.hasCaptured(4) ? match.captured(4).toInt() : 6;
            result += locale.toString(argument.toDouble(), 'f', places);
        }
    }
    return result.append(QStringView(text).mid(end));
}

} // namespace platform
