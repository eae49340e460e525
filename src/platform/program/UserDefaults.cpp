#include "platform/program/UserDefaults.h"

#include "platform/program/StandardError.h"
#include "platform/tasks/MainThread.h"

#include <QFile>
#include <QLocale>
#include <QSettings>
#include <QStringDecoder>
#include <QStringList>

namespace platform {

namespace {

/// Settings files are small; anything larger is something else.
constexpr qint64 largestFile = 4 * 1024 * 1024;

/// Empty if the bytes read as an INI file, else what is wrong with them. The library's own reader
/// accepts nearly anything, and would write back what it made of it.
QString problemOf(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(bytes);
    if (decoder.hasError()) return QStringLiteral("it is not text in UTF-8");
    int number = 0;
    for (const QStringView line : QStringView(text).split(u'\n')) {
        ++number;
        const QStringView trimmed = line.trimmed();
        const bool known = trimmed.isEmpty() || trimmed.startsWith(u';') ||
                           trimmed.startsWith(u'#') || trimmed.contains(u'=') ||
                           (trimmed.startsWith(u'[') && trimmed.endsWith(u']'));
        const bool control =
            std::ranges::any_of(trimmed, [](QChar c) { return c < u' ' && c != u'\t'; });
        if (!known || control) return QStringLiteral("line %1 is no setting").arg(number);
    }
    return {};
}

std::optional<bool> readBool(const QString& text) {
    if (text == u"true" || text == u"1") return true;
    if (text == u"false" || text == u"0") return false;
    return std::nullopt;
}

std::optional<qint64> readInteger(const QString& text) {
    bool valid = false;
    const qint64 number = text.trimmed().toLongLong(&valid);
    return valid ? std::optional(number) : std::nullopt;
}

std::optional<double> readDouble(const QString& text) {
    bool valid = false;
    const double number = text.trimmed().toDouble(&valid);
    return valid && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<QByteArray> readData(const QString& text) {
    const auto decoded = QByteArray::fromBase64Encoding(
        text.toLatin1(), QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? std::optional(decoded.decoded) : std::nullopt;
}

std::optional<UserDefaults::IntegerArray> readIntegers(const QString& text) {
    UserDefaults::IntegerArray array;
    if (text.trimmed().isEmpty()) return array;
    for (const QString& part : text.split(u',')) {
        bool valid = false;
        array.push_back(part.trimmed().toInt(&valid));
        if (!valid) return std::nullopt;
    }
    return array;
}

/// An empty array within an array of arrays: without it, one empty array would read as none.
constexpr QStringView emptyArray = u"-";

std::optional<std::vector<UserDefaults::IntegerArray>> readIntegerArrays(const QString& text) {
    std::vector<UserDefaults::IntegerArray> arrays;
    if (text.trimmed().isEmpty()) return arrays;
    for (const QString& part : text.split(u';')) {
        auto array = readIntegers(part.trimmed() == emptyArray ? QString() : part);
        if (!array) return std::nullopt;
        arrays.push_back(std::move(*array));
    }
    return arrays;
}

QString textOf(const UserDefaults::IntegerArray& array) {
    QStringList parts;
    for (const int number : array)
        parts.append(QString::number(number));
    return parts.join(u',');
}

} // namespace

UserDefaults::UserDefaults(QString file) : _file(std::move(file)) {
    assertMainThread();
    load();
}

UserDefaults::~UserDefaults() = default;

void UserDefaults::load() {
    QFile file(_file);
    if (file.exists()) {
        if (!file.open(QIODevice::ReadOnly)) {
            return keepInMemory(QStringLiteral("can't be read (%1)").arg(file.errorString()));
        }
        if (file.size() > largestFile) return keepInMemory(QStringLiteral("is too large"));
        const QString problem = problemOf(file.readAll());
        if (!problem.isEmpty()) return keepInMemory(QStringLiteral("is damaged (%1)").arg(problem));
    }
    _settings = std::make_unique<QSettings>(_file, QSettings::IniFormat);
    if (_settings->status() == QSettings::FormatError) {
        return keepInMemory(QStringLiteral("is damaged"));
    }
    for (const QString& key : _settings->allKeys()) {
        // A list is what an unquoted comma reads as.
        _entries[key] = _settings->value(key).toStringList().join(u',');
    }
}

void UserDefaults::keepInMemory(const QString& problem) {
    complain(QStringLiteral("the settings file %1 %2; it is left as it is, and changes of "
                            "settings last until the program ends")
                 .arg(_file, problem));
    _settings.reset();
}

bool UserDefaults::hasKey(const QString& key) const {
    assertMainThread();
    return _entries.contains(key);
}

void UserDefaults::store(const QString& key, const QString& text) {
    assertMainThread();
    const auto entry = _entries.find(key);
    if (entry != _entries.end() && entry->second == text) return;
    _entries[key] = text;
    if (!_settings) return;
    _settings->setValue(key, text);
    flush();
}

void UserDefaults::flush() {
    _settings->sync();
    if (_settings->status() == QSettings::AccessError) {
        keepInMemory(QStringLiteral("can't be written"));
    }
}

template <typename T>
std::optional<T> UserDefaults::typed(
    const QString& key, const char* type, std::optional<T> (*read)(const QString&)) const {
    assertMainThread();
    const auto entry = _entries.find(key);
    if (entry == _entries.end()) return std::nullopt;
    auto value = read(entry->second);
    if (!value && _complained.insert(key).second) {
        complain(QStringLiteral("the setting \"%1\" in %2 is not %3; its default is used")
                     .arg(key, _file, QLatin1StringView(type)));
    }
    return value;
}

std::optional<bool> UserDefaults::boolForKey(const QString& key) const {
    return typed(key, "true or false", readBool);
}

std::optional<qint64> UserDefaults::integerForKey(const QString& key) const {
    return typed(key, "a whole number", readInteger);
}

std::optional<double> UserDefaults::doubleForKey(const QString& key) const {
    return typed(key, "a number", readDouble);
}

std::optional<QString> UserDefaults::stringForKey(const QString& key) const {
    assertMainThread();
    const auto entry = _entries.find(key);
    return entry == _entries.end() ? std::nullopt : std::optional(entry->second);
}

std::optional<QByteArray> UserDefaults::dataForKey(const QString& key) const {
    return typed(key, "bytes in base 64", readData);
}

std::optional<UserDefaults::IntegerArray> UserDefaults::integersForKey(const QString& key) const {
    return typed(key, "a list of whole numbers", readIntegers);
}

std::optional<std::vector<UserDefaults::IntegerArray>>
UserDefaults::integerArraysForKey(const QString& key) const {
    return typed(key, "a list of lists of whole numbers", readIntegerArrays);
}

void UserDefaults::setBool(bool value, const QString& key) {
    store(key, value ? QStringLiteral("true") : QStringLiteral("false"));
}

void UserDefaults::setInteger(qint64 value, const QString& key) {
    store(key, QString::number(value));
}

void UserDefaults::setDouble(double value, const QString& key) {
    store(key, QString::number(value, 'g', QLocale::FloatingPointShortest));
}

void UserDefaults::setString(const QString& value, const QString& key) {
    store(key, value);
}

void UserDefaults::setData(const QByteArray& value, const QString& key) {
    store(key, QString::fromLatin1(value.toBase64()));
}

void UserDefaults::setIntegers(const IntegerArray& value, const QString& key) {
    store(key, textOf(value));
}

void UserDefaults::setIntegerArrays(const std::vector<IntegerArray>& value, const QString& key) {
    QStringList parts;
    for (const IntegerArray& array : value)
        parts.append(array.empty() ? emptyArray.toString() : textOf(array));
    store(key, parts.join(u';'));
}

} // namespace platform
