#include "info/rows/InfoRow.h"

#include "platform/program/LocalizedTexts.h"

using platform::localizedString;

QString InfoRow::shownValue() const {
    switch (state) {
    case State::Value:
        return text;
    case State::Mixed:
        return localizedString(u"Multivalue");
    case State::Missing:
        return localizedString(u"UndefinedValue");
    case State::Gathering:
        return localizedString(u"GatheringValue");
    }
    return {};
}
