#pragma once

#include <QByteArray>
#include <QString>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

class QSettings;

namespace platform {

/// The user's settings: typed values by key in one INI file, which is written through at each
/// change, in one step (a new file takes the old one's place). Arrays are written as "3,5", arrays
/// of arrays as "3,5;3,14" ("-" for an empty one), bytes in base 64. Main thread only.
///
/// A file that can't be read as settings is left as it is: this run then uses the defaults and
/// keeps its changes in memory. So is a folder that can't be written. A value of the wrong type
/// counts as absent. Each of these is told once, in one line on standard error.
class UserDefaults {
public:
    using IntegerArray = std::vector<int>;

    explicit UserDefaults(QString file);
    ~UserDefaults();
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    [[nodiscard]] bool hasKey(const QString& key) const;

    /// The value, or nothing when it is absent or of another type.
    [[nodiscard]] std::optional<bool> boolForKey(const QString& key) const;
    [[nodiscard]] std::optional<qint64> integerForKey(const QString& key) const;
    [[nodiscard]] std::optional<double> doubleForKey(const QString& key) const;
    [[nodiscard]] std::optional<QString> stringForKey(const QString& key) const;
    [[nodiscard]] std::optional<QByteArray> dataForKey(const QString& key) const;
    [[nodiscard]] std::optional<IntegerArray> integersForKey(const QString& key) const;
    [[nodiscard]] std::optional<std::vector<IntegerArray>>
    integerArraysForKey(const QString& key) const;

    /// Stores and writes; a value that stands already costs nothing.
    void setBool(bool value, const QString& key);
    void setInteger(qint64 value, const QString& key);
    void setDouble(double value, const QString& key);
    void setString(const QString& value, const QString& key);
    void setData(const QByteArray& value, const QString& key);
    void setIntegers(const IntegerArray& value, const QString& key);
    void setIntegerArrays(const std::vector<IntegerArray>& value, const QString& key);

private:
    void load();
    void store(const QString& key, const QString& text);
    void flush();
    void keepInMemory(const QString& problem);
    template <typename T>
    [[nodiscard]] std::optional<T>
    typed(const QString& key, const char* type, std::optional<T> (*read)(const QString&)) const;

    const QString _file;
    std::map<QString, QString> _entries;
    std::unique_ptr<QSettings> _settings;  // empty when changes stay in memory
    mutable std::set<QString> _complained; // keys told already
};

} // namespace platform
