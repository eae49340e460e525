#include "platform/desktop/DesktopPrograms.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QLocale>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>
#include <QUrl>

#include <algorithm>
#include <optional>

namespace platform::DesktopPrograms {

namespace {

/// Such files have some hundred lines; another one of that name is none.
constexpr qint64 longestFile = 4 * 1024 * 1024;

/// Groups of keys with their values, as they stand.
using Groups = QHash<QByteArray, QHash<QByteArray, QByteArray>>;

Groups readGroups(const QString& path) {
    QFile file(path);
    Groups groups;
    if (!file.open(QIODevice::ReadOnly) || file.size() > longestFile) return groups;
    QByteArray group;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (line.isEmpty() || line.startsWith('#')) continue;
        if (line.startsWith('[') && line.endsWith(']')) {
            group = line.mid(1, line.size() - 2);
            continue;
        }
        const qsizetype equals = line.indexOf('=');
        if (equals > 0)
            groups[group].insert(line.first(equals).trimmed(), line.mid(equals + 1).trimmed());
    }
    return groups;
}

QStringList listOf(const QByteArray& value) {
    return QString::fromUtf8(value).split(u';', Qt::SkipEmptyParts);
}

QStringList desktops() {
    return QString::fromLocal8Bit(qgetenv("XDG_CURRENT_DESKTOP")).split(u':', Qt::SkipEmptyParts);
}

/// What the lists say of types: which programs, in the order of preference.
class Associations {
public:
    explicit Associations(const SchemeHandlers::Places& places) {
        for (const QString& folder : places.lists) {
            for (const QString& desktop : desktops())
                add(folder + u'/' + desktop.toLower() + QStringLiteral("-mimeapps.list"));
            add(folder + QStringLiteral("/mimeapps.list"));
        }
        for (const QString& folder : places.applications)
            add(folder + QStringLiteral("/mimeinfo.cache"));
    }

    [[nodiscard]] QStringList programs(const QString& type) const {
        const QByteArray key = type.toUtf8();
        QStringList preferred;
        QStringList others;
        QSet<QString> removed; // by lists that stand before
        for (const Groups& list : _lists) {
            const auto take = [&](QStringList& into, const char* group) {
                for (const QString& id : listOf(list.value(group).value(key)))
                    if (!removed.contains(id)) into += id;
            };
            take(preferred, "Default Applications");
            take(others, "Added Associations");
            for (const QString& id : listOf(list.value("Removed Associations").value(key)))
                removed.insert(id);
            take(others, "MIME Cache");
        }
        QStringList all = preferred + others;
        all.removeDuplicates();
        return all;
    }

private:
    void add(const QString& path) {
        if (Groups groups = readGroups(path); !groups.isEmpty())
            _lists.push_back(std::move(groups));
    }
    std::vector<Groups> _lists;
};

/// A dash in an id may stand for a folder.
QString findFile(const QString& id, const QStringList& folders) {
    if (id.contains(u'/')) return {};
    for (const QString& folder : folders) {
        QString name = id;
        for (;;) {
            if (QFileInfo(folder + u'/' + name).isFile()) return folder + u'/' + name;
            const qsizetype dash = name.indexOf(u'-');
            if (dash < 0) break;
            name[dash] = u'/';
        }
    }
    return {};
}

bool isTrue(const QByteArray& value) {
    return value == "true" || value == "1";
}

bool isForThisDesktop(const QHash<QByteArray, QByteArray>& entry) {
    const QStringList here = desktops();
    const auto names = [&](const char* key) {
        const QStringList list = listOf(entry.value(key));
        return std::ranges::any_of(
            here, [&](const QString& desktop) { return list.contains(desktop); });
    };
    if (entry.contains("OnlyShowIn") && !names("OnlyShowIn")) return false;
    return !names("NotShowIn");
}

QString nameOf(const QHash<QByteArray, QByteArray>& entry) {
    const QByteArray locale = QLocale().name().toUtf8();
    const QByteArray language = locale.first(std::max<qsizetype>(locale.indexOf('_'), 0));
    for (const QByteArray& key :
         {QByteArray("Name[" + locale + ']'), QByteArray("Name[" + language + ']')})
        if (entry.contains(key)) return QString::fromUtf8(entry.value(key));
    return QString::fromUtf8(entry.value("Name"));
}

bool isInstalled(const QString& program) {
    return program.isEmpty() || !QStandardPaths::findExecutable(program).isEmpty();
}

/// The words of a command line. Nothing for quotes that don't end.
std::optional<QStringList> wordsOf(const QString& exec) {
    QStringList words;
    QString word;
    bool isWord = false;
    bool isQuoted = false;
    for (qsizetype i = 0; i < exec.size(); ++i) {
        const QChar c = exec[i];
        if (isQuoted && c == u'\\' && i + 1 < exec.size()) {
            word += exec[++i];
        } else if (c == u'"') {
            isQuoted = !isQuoted;
            isWord = true;
        } else if (!isQuoted && c.isSpace()) {
            if (isWord) words += word;
            word.clear();
            isWord = false;
        } else {
            word += c;
            isWord = true;
        }
    }
    if (isQuoted) return std::nullopt;
    if (isWord) words += word;
    return words;
}

/// The escapes that every value may have.
QString unescaped(const QByteArray& value) {
    QString text;
    const QString raw = QString::fromUtf8(value);
    for (qsizetype i = 0; i < raw.size(); ++i) {
        if (raw[i] != u'\\' || i + 1 == raw.size()) {
            text += raw[i];
            continue;
        }
        switch (raw[++i].unicode()) {
        case u's':
            text += u' ';
            break;
        case u'n':
            text += u'\n';
            break;
        case u't':
            text += u'\t';
            break;
        case u'r':
            text += u'\r';
            break;
        default:
            text += raw[i];
        }
    }
    return text;
}

std::optional<Program> readProgram(const QString& id, const QStringList& folders) {
    const QString path = findFile(id, folders);
    if (path.isEmpty()) return std::nullopt;
    const auto entry = readGroups(path).value("Desktop Entry");
    if (entry.value("Type") != "Application" || isTrue(entry.value("NoDisplay")) ||
        isTrue(entry.value("Hidden")) || isTrue(entry.value("Terminal")) ||
        !isForThisDesktop(entry) || !isInstalled(unescaped(entry.value("TryExec"))))
        return std::nullopt;
    Program program{
        .id = id,
        .name = nameOf(entry),
        .icon = unescaped(entry.value("Icon")),
        .exec = unescaped(entry.value("Exec")),
        .path = path,
        .folder = unescaped(entry.value("Path"))};
    const auto words = wordsOf(program.exec);
    if (!words || words->isEmpty() || !isInstalled(words->constFirst())) return std::nullopt;
    return program;
}

QString asUrl(const QString& path) {
    return QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded);
}

/// A word with its field codes filled in.
QString filledIn(const Program& program, const QString& word, const QString& path) {
    QString filled;
    for (qsizetype i = 0; i < word.size(); ++i) {
        if (word[i] != u'%' || i + 1 == word.size()) {
            filled += word[i];
            continue;
        }
        switch (word[++i].unicode()) {
        case u'%':
            filled += u'%';
            break;
        case u'f':
            filled += path;
            break;
        case u'u':
            filled += asUrl(path);
            break;
        case u'c':
            filled += program.name;
            break;
        case u'k':
            filled += program.path;
            break;
        default: // one that means nothing any more
            break;
        }
    }
    return filled;
}

QStringList lineFor(const Program& program, const QStringList& words, const QStringList& paths) {
    QStringList line;
    for (const QString& word : words) {
        if (word == QStringLiteral("%F")) {
            line += paths;
        } else if (word == QStringLiteral("%U")) {
            for (const QString& path : paths)
                line += asUrl(path);
        } else if (word == QStringLiteral("%i")) {
            if (!program.icon.isEmpty()) line << QStringLiteral("--icon") << program.icon;
        } else {
            const QString filled = filledIn(program, word, paths.constFirst());
            if (!filled.isEmpty() || !word.startsWith(u'%')) line += filled;
        }
    }
    return line;
}

} // namespace

std::vector<Program>
programsFor(const QStringList& mimeTypes, const SchemeHandlers::Places& places) {
    if (mimeTypes.isEmpty()) return {};
    const Associations associations(places);
    QStringList ids = associations.programs(mimeTypes.constFirst());
    for (const QString& type : mimeTypes) {
        const QStringList others = associations.programs(type);
        ids.removeIf([&](const QString& id) { return !others.contains(id); });
    }
    std::vector<Program> programs;
    for (const QString& id : ids) {
        if (id == QStringLiteral("velmora.desktop")) continue;
        if (auto program = readProgram(id, places.applications))
            programs.push_back(std::move(*program));
    }
    return programs;
}

std::vector<Program> programsFor(const QStringList& mimeTypes) {
    return programsFor(mimeTypes, SchemeHandlers::standardPlaces());
}

std::vector<QStringList> commandLines(const Program& program, const QStringList& paths) {
    const auto words = wordsOf(program.exec);
    if (!words || words->isEmpty() || paths.isEmpty()) return {};
    if (words->contains(QStringLiteral("%F")) || words->contains(QStringLiteral("%U")))
        return {lineFor(program, *words, paths)};
    const bool saysWhere = std::ranges::any_of(*words, [](const QString& word) {
        return word.contains(QStringLiteral("%f")) || word.contains(QStringLiteral("%u"));
    });
    std::vector<QStringList> lines;
    for (const QString& path : paths) {
        lines.push_back(lineFor(program, *words, {path}));
        if (!saysWhere) lines.back() += path;
    }
    return lines;
}

bool open(const Program& program, const QStringList& paths) {
    const std::vector<QStringList> lines = commandLines(program, paths);
    return !lines.empty() && std::ranges::all_of(lines, [&](const QStringList& line) {
        return QProcess::startDetached(line.constFirst(), line.mid(1), program.folder);
    });
}

} // namespace platform::DesktopPrograms
