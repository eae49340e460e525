#include "places/Addresses.h"

#include "places/Geocoder.h"

#include <QStringList>

namespace PBUtilities {

namespace {

using namespace places;

const PBValue* entryOf(const PBValue& address, const QString& key) {
    const PBDictionary* dictionary = address.dictionary();
    if (dictionary == nullptr) return nullptr;
    return &valueForKey(*dictionary, key);
}

/// A null string if there is no such text, or an empty one.
QString textOf(const PBValue& address, const QString& key) {
    const PBValue* entry = entryOf(address, key);
    const QString* text = entry == nullptr ? nullptr : entry->getIf<QString>();
    return text == nullptr || text->isEmpty() ? QString() : *text;
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

} // namespace PBUtilities
