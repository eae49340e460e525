#include "info/geo/Addresses.h"

#include "core/LocalizedCompare.h"
#include "platform/Geocoder.h"

#include <QStringList>

namespace PBUtilities {

namespace {

using namespace platform;

const QString& longLocationKey() {
    static const QString key = QStringLiteral("LongLocation");
    return key;
}

const PBValue* entryOf(const PBValue& address, const QString& key) {
    const PBDictionary* dictionary = address.dictionary();
    if (dictionary == nullptr) return nullptr;
    const auto found = dictionary->find(key);
    return found == dictionary->end() ? nullptr : &found->second;
}

/// A null string if there is no such text, or an empty one.
QString textOf(const PBValue& address, const QString& key) {
    const PBValue* entry = entryOf(address, key);
    const QString* text = entry == nullptr ? nullptr : entry->getIf<QString>();
    return text == nullptr || text->isEmpty() ? QString() : *text;
}

QString comparedText(const PBValue& address, const QString& compareKey) {
    if (compareKey == longLocationKey()) return longLocationStringForAddressDictionary(address);
    if (compareKey == QStringLiteral("ShortLocation")) {
        return shortLocationStringForAddressDictionary(address);
    }
    return textOf(address, compareKey);
}

/// How late an address comes for want of content.
int rankOf(const PBValue& address) {
    return address.isAbsent() ? 2 : address.isNull() ? 1 : 0;
}

} // namespace

QString shortLocationStringForAddressDictionary(const PBValue& address) {
    QStringList names;
    const auto append = [&](const QString& key) {
        const QString name = textOf(address, key);
        if (!name.isNull() && !names.contains(name, Qt::CaseInsensitive)) names.append(name);
    };
    append(AddressKeys::subLocality);
    append(AddressKeys::city);
    append(AddressKeys::state);
    if (names.isEmpty()) append(AddressKeys::name);
    if (names.size() < 3) append(AddressKeys::country);
    return names.isEmpty() ? QString() : names.join(QStringLiteral(", "));
}

QString longLocationStringForAddressDictionary(const PBValue& address) {
    QStringList lines;
    const PBValue* entry = entryOf(address, AddressKeys::formattedAddressLines);
    const PBArray* array = entry == nullptr ? nullptr : entry->array();
    for (const PBValue& line : array == nullptr ? PBArray() : *array) {
        const QString* text = line.getIf<QString>();
        if (text != nullptr && !text->isEmpty()) lines.append(*text);
    }
    return lines.isEmpty() ? shortLocationStringForAddressDictionary(address)
                           : lines.join(QStringLiteral(", "));
}

bool isEqualAddressDictionary(const PBValue& address, const PBValue& otherDict) {
    return compareAddressDictionary(address, otherDict, longLocationKey()) == 0;
}

int compareAddressDictionary(
    const PBValue& address, const PBValue& otherDict, const QString& compareKey) {
    const int rank = rankOf(address);
    const int otherRank = rankOf(otherDict);
    if (rank != otherRank) return rank < otherRank ? -1 : 1;
    if (rank != 0 || (address.isDictionary() && address.dictionary() == otherDict.dictionary())) {
        return 0;
    }
    const QString text = comparedText(address, compareKey);
    const QString otherText = comparedText(otherDict, compareKey);
    if (text == otherText) return 0;
    if (text.isNull()) return 1;
    if (otherText.isNull()) return -1;
    return localizedStandardCompare(text, otherText);
}

int compareAddressDictionary(const PBValue& address, const PBValue& otherDict) {
    const int order = compareAddressDictionary(address, otherDict, longLocationKey());
    if (order == 0) return 0;
    for (const QString* key :
         {&AddressKeys::country, &AddressKeys::state, &AddressKeys::city, &AddressKeys::subLocality,
          &AddressKeys::name}) {
        const int part = compareAddressDictionary(address, otherDict, *key);
        if (part != 0) return part;
    }
    return order;
}

} // namespace PBUtilities
