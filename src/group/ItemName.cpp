#include "group/ItemName.h"

#include "core/LocalizedCompare.h"
#include "platform/tasks/Mutex.h"

#include <utility>

namespace group {

ItemName::~ItemName() {
    delete _current.load(std::memory_order_relaxed);
}

void ItemName::setText(QString text) {
    std::unique_ptr<const Record> before(_current.load(std::memory_order_relaxed));
    _current.store(new Record(std::move(text), std::move(before)), std::memory_order_release);
}

const QCollatorSortKey& ItemName::Record::sortKey() const {
    // One lock for all names: a key is made once, and hardly ever by two threads at a time.
    static platform::Mutex making;
    if (!_hasKey.load(std::memory_order_acquire)) {
        const platform::Lock lock(making);
        if (!_key) {
            _key = PBUtilities::localizedSortKey(text);
            _hasKey.store(true, std::memory_order_release);
        }
    }
    return *_key;
}

int ItemName::compare(const ItemName& other) const {
    const Record& mine = current();
    const Record& others = other.current();
    if (&mine == &others) return 0;
    if (const int order = PBUtilities::compareSortKeys(mine.sortKey(), others.sortKey()))
        return order;
    const int order = mine.text.compare(others.text);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

} // namespace group
