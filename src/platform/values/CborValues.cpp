#include "platform/values/CborValues.h"

#include <QCborArray>
#include <QCborMap>
#include <QCborValue>

namespace platform {

namespace {

// Tags of our own, from the range that is free for applications.
constexpr auto dateTag = QCborTag(80001);
constexpr auto locationTag = QCborTag(80002);
/// Nesting that no metadata has; deeper bytes are refused.
constexpr int deepest = 16;

QCborValue encodeValue(const PBValue& value);

QCborMap encodeMap(const PBDictionary& dictionary) {
    QCborMap map;
    for (const auto& [key, value] : dictionary)
        map.insert(key, encodeValue(value));
    return map;
}

QCborValue encodeValue(const PBValue& value) {
    if (value.isAbsent()) return QCborValue(QCborValue::Undefined);
    if (value.isNull()) return QCborValue(QCborValue::Null);
    if (const auto* truth = value.getIf<bool>()) return QCborValue(*truth);
    if (value.isFloating()) return QCborValue(value.toDouble());
    if (value.isNumber()) return QCborValue(value.toInteger());
    if (const auto* text = value.getIf<QString>()) return QCborValue(*text);
    if (const auto* bytes = value.getIf<QByteArray>()) return QCborValue(*bytes);
    if (const auto* date = value.getIf<PBDate>()) {
        return QCborValue(dateTag, QCborValue(date->secondsSince1970));
    }
    if (const auto* location = value.getIf<PBLocation>()) {
        return QCborValue(locationTag, QCborArray{location->latitude, location->longitude});
    }
    if (const PBDictionary* dictionary = value.dictionary()) return encodeMap(*dictionary);
    QCborArray array;
    if (const PBArray* elements = value.array()) {
        for (const PBValue& element : *elements)
            array.append(encodeValue(element));
    }
    return array;
}

std::optional<PBValue> decodeValue(const QCborValue& value, int depth);

std::optional<PBDictionary> decodeMap(const QCborMap& map, int depth) {
    PBDictionary dictionary;
    for (const auto& [key, value] : map) {
        auto decoded = decodeValue(value, depth);
        if (!key.isString() || !decoded) return std::nullopt;
        dictionary.insert_or_assign(key.toString(), std::move(*decoded));
    }
    return dictionary;
}

std::optional<PBValue> decodeArray(const QCborArray& array, int depth) {
    PBArray elements;
    for (const QCborValue& value : array) {
        auto decoded = decodeValue(value, depth);
        if (!decoded) return std::nullopt;
        elements.push_back(std::move(*decoded));
    }
    return PBValue(std::move(elements));
}

std::optional<PBValue> decodeTagged(const QCborValue& value) {
    const QCborValue content = value.taggedValue();
    if (value.tag() == dateTag && content.isDouble()) return PBDate{content.toDouble()};
    const QCborArray pair = content.toArray();
    if (value.tag() == locationTag && pair.size() == 2) {
        return PBLocation{pair.at(0).toDouble(), pair.at(1).toDouble()};
    }
    return std::nullopt;
}

std::optional<PBValue> decodeValue(const QCborValue& value, int depth) {
    if (depth > deepest) return std::nullopt;
    switch (value.type()) {
    case QCborValue::Undefined:
        return PBValue();
    case QCborValue::Null:
        return PBValue(PBNull());
    case QCborValue::True:
        return PBValue(true);
    case QCborValue::False:
        return PBValue(false);
    case QCborValue::Integer:
        return PBValue(value.toInteger());
    case QCborValue::Double:
        return PBValue(value.toDouble());
    case QCborValue::String:
        return PBValue(value.toString());
    case QCborValue::ByteArray:
        return PBValue(value.toByteArray());
    case QCborValue::Array:
        return decodeArray(value.toArray(), depth + 1);
    case QCborValue::Map: {
        auto dictionary = decodeMap(value.toMap(), depth + 1);
        return dictionary ? std::optional(PBValue(std::move(*dictionary))) : std::nullopt;
    }
    case QCborValue::Tag:
        return decodeTagged(value);
    default:
        return std::nullopt;
    }
}

} // namespace

QByteArray encodeDictionary(const PBDictionary& dictionary) {
    return QCborValue(encodeMap(dictionary)).toCbor();
}

std::optional<PBDictionary> decodeDictionary(const QByteArray& bytes) {
    QCborParserError error;
    const QCborValue value = QCborValue::fromCbor(bytes, &error);
    if (error.error != QCborError::NoError || !value.isMap()) return std::nullopt;
    return decodeMap(value.toMap(), 0);
}

} // namespace platform
