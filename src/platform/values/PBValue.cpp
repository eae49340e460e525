#include "platform/values/PBValue.h"

#include <QDateTime>
#include <QLocale>
#include <QStringList>

#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

namespace {

template <typename T>
constexpr bool isNumberType = std::is_arithmetic_v<T>;

QString describeDate(const PBDate& date) {
    const auto instant = QDateTime::fromMSecsSinceEpoch(
        static_cast<qint64>(date.secondsSince1970 * 1000.0), Qt::UTC);
    return instant.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss +0000"));
}

QString describeArray(const PBArray& array) {
    QStringList parts;
    parts.reserve(static_cast<qsizetype>(array.size()));
    for (const PBValue& element : array)
        parts.append(element.toText());
    return parts.join(u',');
}

qint64 integerFromDouble(double number) {
    // 2^63 as a double: the first value that no longer fits.
    constexpr double limit = 9223372036854775808.0;
    if (std::isnan(number)) return 0;
    if (number >= limit) return std::numeric_limits<qint64>::max();
    if (number < -limit) return std::numeric_limits<qint64>::min();
    return static_cast<qint64>(number);
}

/// The longest leading part of the text that reads as a number, as SQLite's own conversion takes.
double leadingNumber(const QString& text) {
    const QByteArray bytes = text.trimmed().toLatin1();
    qsizetype end = 0;
    const auto digits = [&] {
        const qsizetype start = end;
        while (end < bytes.size() && bytes[end] >= '0' && bytes[end] <= '9')
            ++end;
        return end - start;
    };
    if (end < bytes.size() && (bytes[end] == '-' || bytes[end] == '+')) ++end;
    qsizetype count = digits();
    if (end < bytes.size() && bytes[end] == '.') {
        ++end;
        count += digits();
    }
    if (count == 0) return 0;
    const qsizetype mantissaEnd = end;
    if (end < bytes.size() && (bytes[end] == 'e' || bytes[end] == 'E')) {
        ++end;
        if (end < bytes.size() && (bytes[end] == '-' || bytes[end] == '+')) ++end;
        if (digits() == 0) end = mantissaEnd;
    }
    return bytes.left(end).toDouble();
}

} // namespace

PBValue::PBValue(PBArray array) : _storage(std::make_shared<const PBArray>(std::move(array))) {}

PBValue::PBValue(PBDictionary dictionary)
    : _storage(std::make_shared<const PBDictionary>(std::move(dictionary))) {}

bool PBValue::isNumber() const {
    return std::visit(
        [](const auto& held) { return isNumberType<std::decay_t<decltype(held)>>; }, _storage);
}

qint64 PBValue::toInteger() const {
    return std::visit(
        [](const auto& held) -> qint64 {
            using T = std::decay_t<decltype(held)>;
            if constexpr (std::is_floating_point_v<T>) {
                return integerFromDouble(static_cast<double>(held));
            } else if constexpr (std::is_same_v<T, quint64>) {
                return held > quint64(std::numeric_limits<qint64>::max())
                           ? std::numeric_limits<qint64>::max()
                           : static_cast<qint64>(held);
            } else if constexpr (isNumberType<T>) {
                return static_cast<qint64>(held);
            } else if constexpr (std::is_same_v<T, QString>) {
                bool whole = false;
                const qint64 number = held.trimmed().toLongLong(&whole);
                return whole ? number : integerFromDouble(leadingNumber(held));
            } else {
                return 0;
            }
        },
        _storage);
}

double PBValue::toDouble() const {
    return std::visit(
        [](const auto& held) -> double {
            using T = std::decay_t<decltype(held)>;
            if constexpr (isNumberType<T>) {
                return static_cast<double>(held);
            } else if constexpr (std::is_same_v<T, QString>) {
                return leadingNumber(held);
            } else if constexpr (std::is_same_v<T, PBDate>) {
                return held.secondsSince1970;
            } else {
                return 0;
            }
        },
        _storage);
}

QString PBValue::toText() const {
    return std::visit(
        [](const auto& held) -> QString {
            using T = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<T, QString>) {
                return held;
            } else if constexpr (std::is_same_v<T, bool>) {
                return held ? QStringLiteral("1") : QStringLiteral("0");
            } else if constexpr (std::is_same_v<T, float>) {
                // The shortest text of the float itself, not of the double it widens to.
                for (int digits = 1; digits < std::numeric_limits<float>::max_digits10; ++digits) {
                    const QString text = QString::number(static_cast<double>(held), 'g', digits);
                    if (text.toFloat() == held) return text;
                }
                return QString::number(
                    static_cast<double>(held), 'g', std::numeric_limits<float>::max_digits10);
            } else if constexpr (std::is_same_v<T, double>) {
                return QString::number(held, 'g', QLocale::FloatingPointShortest);
            } else if constexpr (isNumberType<T>) {
                return QString::number(held);
            } else if constexpr (std::is_same_v<T, QByteArray>) {
                return QString::fromUtf8(held);
            } else if constexpr (std::is_same_v<T, PBDate>) {
                return describeDate(held);
            } else if constexpr (std::is_same_v<T, PBLocation>) {
                return PBValue(held.latitude).toText() + u',' + PBValue(held.longitude).toText();
            } else if constexpr (std::is_same_v<T, std::shared_ptr<const PBArray>>) {
                return describeArray(*held);
            } else if constexpr (std::is_same_v<T, std::shared_ptr<const PBDictionary>>) {
                QStringList parts;
                for (const auto& [key, value] : *held)
                    parts.append(key + u'=' + value.toText());
                return parts.join(u',');
            } else {
                return {};
            }
        },
        _storage);
}

QByteArray PBValue::toBytes() const {
    const auto* bytes = getIf<QByteArray>();
    return bytes ? *bytes : QByteArray();
}

const PBArray* PBValue::array() const {
    const auto* held = getIf<std::shared_ptr<const PBArray>>();
    return held ? held->get() : nullptr;
}

const PBDictionary* PBValue::dictionary() const {
    const auto* held = getIf<std::shared_ptr<const PBDictionary>>();
    return held ? held->get() : nullptr;
}

bool operator==(const PBValue& left, const PBValue& right) {
    if (left.isNumber() && right.isNumber()) {
        if (left.isFloating() || right.isFloating()) return left.toDouble() == right.toDouble();
        const auto* leftBig = left.getIf<quint64>();
        const auto* rightBig = right.getIf<quint64>();
        if (leftBig && rightBig) return *leftBig == *rightBig;
        if (leftBig) return std::cmp_equal(*leftBig, right.toInteger());
        if (rightBig) return std::cmp_equal(*rightBig, left.toInteger());
        return left.toInteger() == right.toInteger();
    }
    if (left.array() && right.array()) return *left.array() == *right.array();
    if (left.dictionary() && right.dictionary()) return *left.dictionary() == *right.dictionary();
    return left._storage == right._storage;
}

const PBValue& valueForKey(const PBDictionary& dictionary, const QString& key) {
    static const PBValue absent;
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? absent : found->second;
}
