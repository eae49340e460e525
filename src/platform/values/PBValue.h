#pragma once

#include <QByteArray>
#include <QString>

#include <concepts>
#include <map>
#include <memory>
#include <variant>
#include <vector>

class PBValue;

/// The null marker: a slot or column that is known to hold nothing. Not the same as absent.
struct PBNull {
    bool operator==(const PBNull&) const = default;
};

/// An instant, in seconds since 1970-01-01 00:00:00 UTC.
struct PBDate {
    double secondsSince1970 = 0;
    auto operator<=>(const PBDate&) const = default;
};

/// A position on the Earth in signed decimal degrees, north and east positive.
struct PBLocation {
    double latitude = 0;
    double longitude = 0;
    bool operator==(const PBLocation&) const = default;
};

using PBArray = std::vector<PBValue>;
/// Keyed values in key order, so that equal key sets always give equal statement texts.
using PBDictionary = std::map<QString, PBValue>;

namespace platform::detail {

template <typename T>
concept StoredNumber = std::same_as<T, bool> || std::same_as<T, int> || std::same_as<T, unsigned> ||
    std::same_as<T, long> || std::same_as<T, unsigned long> || std::same_as<T, long long> ||
    std::same_as<T, unsigned long long> || std::same_as<T, float> || std::same_as<T, double>;

/// `long` and `long long` are both 64 bits wide; they are stored as one type.
template <typename T>
struct StoredAs {
    using type = T;
};
template <>
struct StoredAs<long> {
    using type = qint64;
};
template <>
struct StoredAs<unsigned long> {
    using type = quint64;
};

} // namespace platform::detail

/// One value of the catalogue, of image metadata or of a group: absent, the null marker, or a value
/// that remembers its exact type. Nothing turns absent into null or back. Cheap to copy (texts,
/// bytes, arrays and dictionaries are shared and never changed in place); safe to read from any
/// thread.
class PBValue {
public:
    using Storage = std::variant<
        std::monostate, PBNull, bool, qint32, quint32, qint64, quint64, float, double, QString,
        QByteArray, PBDate, PBLocation, std::shared_ptr<const PBArray>,
        std::shared_ptr<const PBDictionary>>;

    /// Absent.
    PBValue() = default;
    PBValue(PBNull marker) : _storage(marker) {}
    template <platform::detail::StoredNumber T>
    PBValue(T number)
        : _storage(static_cast<typename platform::detail::StoredAs<T>::type>(number)) {}
    PBValue(QString text) : _storage(std::move(text)) {}
    PBValue(QByteArray bytes) : _storage(std::move(bytes)) {}
    PBValue(PBDate date) : _storage(date) {}
    PBValue(PBLocation location) : _storage(location) {}
    PBValue(PBArray array);
    PBValue(PBDictionary dictionary);
    /// Keeps pointers and narrow integers from becoming truth values.
    template <typename T>
    PBValue(T*) = delete;

    [[nodiscard]] bool isAbsent() const { return holds<std::monostate>(); }
    [[nodiscard]] bool isNull() const { return holds<PBNull>(); }
    [[nodiscard]] bool hasValue() const { return !isAbsent() && !isNull(); }
    [[nodiscard]] bool isText() const { return holds<QString>(); }
    [[nodiscard]] bool isDate() const { return holds<PBDate>(); }
    [[nodiscard]] bool isLocation() const { return holds<PBLocation>(); }
    [[nodiscard]] bool isArray() const { return array() != nullptr; }
    [[nodiscard]] bool isDictionary() const { return dictionary() != nullptr; }
    /// A truth value, an integer or a floating-point number.
    [[nodiscard]] bool isNumber() const;
    /// A float or a double.
    [[nodiscard]] bool isFloating() const { return holds<float>() || holds<double>(); }

    /// The number, cut towards zero and held within the type's range (not a number gives 0); the
    /// leading number of a text; else 0.
    [[nodiscard]] qint64 toInteger() const;
    /// The number; the leading number of a text; seconds since 1970 of a date; else 0.
    [[nodiscard]] double toDouble() const;
    /// The text itself, or the description of any other value: numbers in their shortest form that
    /// reads back the same, arrays joined with ",". Absent and null give the empty text.
    [[nodiscard]] QString toText() const;
    /// Bytes; empty for every other type.
    [[nodiscard]] QByteArray toBytes() const;

    /// The array or dictionary within, owned by this value; nullptr for every other type.
    [[nodiscard]] const PBArray* array() const;
    [[nodiscard]] const PBDictionary* dictionary() const;

    template <typename T>
    [[nodiscard]] bool holds() const {
        return std::holds_alternative<T>(_storage);
    }
    /// The value if it has exactly this type, else nullptr.
    template <typename T>
    [[nodiscard]] const T* getIf() const {
        return std::get_if<T>(&_storage);
    }
    [[nodiscard]] const Storage& storage() const { return _storage; }

    /// Numbers are equal by value, whatever their stored types; all else by type and content.
    friend bool operator==(const PBValue& left, const PBValue& right);

private:
    Storage _storage;
};

/// The value under the key; an absent one when there is none. Lives as long as the dictionary.
[[nodiscard]] const PBValue& valueForKey(const PBDictionary& dictionary, const QString& key);
