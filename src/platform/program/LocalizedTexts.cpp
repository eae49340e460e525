#include "platform/program/LocalizedTexts.h"

#include "platform/program/HarmlessText.h"
#include "platform/program/TextLanguages.h"
#include "platform/tasks/MainThread.h"
#include "platform/tasks/Mutex.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QMap>
#include <QRegularExpression>

#include <algorithm>

// Resources of a static library have to be named once to be linked in; the macro must stand outside
// of any namespace.
static void initializeTexts() {
    Q_INIT_RESOURCE(texts);
}

namespace platform {

namespace {

using LocalizedTexts::Table;

const QString folder = QStringLiteral(":/texts/");
const QString english = QStringLiteral("en");

const QRegularExpression& placeholders() {
    static const QRegularExpression expression(
        QStringLiteral("%(?:(\\d+)\\$)?(?:(@)|l*(d)|(?:\\.(\\d+))?(f)|(%))"));
    return expression;
}

/// Set on the main thread, asked for by any.
struct Chosen {
    Mutex mutex;
    QString language VELMORA_GUARDED_BY(mutex) = english;
    Table table VELMORA_GUARDED_BY(mutex) = LocalizedTexts::table(english);
};
Chosen& chosen() {
    static Chosen texts;
    return texts;
}

/// The kinds of the arguments that a text takes, by their numbers.
QMap<std::size_t, QString> argumentsOf(const QString& text) {
    QMap<std::size_t, QString> kinds;
    std::size_t next = 0;
    for (const auto& match : placeholders().globalMatch(text)) {
        if (match.hasCaptured(6)) continue;
        const std::size_t index =
            match.hasCaptured(1) ? match.captured(1).toULongLong() - 1 : next++;
        kinds[index] += match.captured(2) + match.captured(3) + match.captured(5);
    }
    return kinds;
}

} // namespace

QStringList LocalizedTexts::languages() {
    initializeTexts();
    return QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
}

Table LocalizedTexts::table(const QString& language) {
    initializeTexts();
    Table table;
    QDirIterator files(folder + language);
    while (files.hasNext()) {
        QFile file(files.next());
        if (!file.open(QIODevice::ReadOnly)) continue;
        const QJsonObject texts = QJsonDocument::fromJson(file.readAll()).object();
        for (auto text = texts.begin(); text != texts.end(); ++text)
            table.insert(text.key(), text.value().toString());
    }
    return table;
}

QString LocalizedTexts::bestLanguage(const QStringList& wished) {
    const QStringList there = languages();
    for (QString wish : wished) {
        wish.replace(u'-', u'_');
        // From "pt_BR" to "pt".
        for (; !wish.isEmpty(); wish.truncate(std::max<qsizetype>(0, wish.lastIndexOf(u'_'))))
            if (there.contains(wish)) return wish;
    }
    return english;
}

void LocalizedTexts::setLanguage(const QString& language) {
    assertMainThread();
    const QLocale system = QLocale::system();
    const QString best =
        bestLanguage(language.isEmpty() ? system.uiLanguages() : QStringList{language});
    const QLocale own(best);
    // Those who chose nothing keep the forms of their country, whatever language there is for it.
    QLocale::setDefault(language.isEmpty() || own.language() == system.language() ? system : own);
    Table texts = table(english);
    if (best != english) texts.insert(table(best));
    const Lock lock(chosen().mutex);
    chosen().language = best;
    chosen().table = std::move(texts);
}

QString LocalizedTexts::language() {
    const Lock lock(chosen().mutex);
    return chosen().language;
}

QStringList LocalizedTexts::faults(const Table& complete, const Table& other) {
    QStringList found;
    for (const auto& [key, text] : complete.asKeyValueRange()) {
        const auto translated = other.constFind(key);
        if (translated == other.constEnd()) {
            found += key + QStringLiteral(": missing");
        } else if (translated->isEmpty() != text.isEmpty()) {
            found += key + QStringLiteral(": empty");
        } else if (argumentsOf(*translated) != argumentsOf(text)) {
            found += key + QStringLiteral(": other placeholders");
        }
    }
    for (const QString& key : other.keys())
        if (!complete.contains(key)) found += key + QStringLiteral(": unknown");
    found.sort();
    return found;
}

QString localizedString(QStringView key) {
    const QString text = key.toString();
    const Lock lock(chosen().mutex);
    return chosen().table.value(text, text);
}

QString localizedFormat(QStringView key, std::initializer_list<PBValue> arguments) {
    return formatText(localizedString(key), arguments);
}

QString formatText(QStringView format, std::initializer_list<PBValue> arguments) {
    const QString text = format.toString();
    const QLocale locale;
    QString result;
    qsizetype end = 0;
    std::size_t next = 0;
    for (const auto& match : placeholders().globalMatch(text)) {
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
