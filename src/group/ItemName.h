#pragma once

#include <QCollatorSortKey>
#include <QString>

#include <atomic>
#include <memory>
#include <optional>

namespace group {

/// The name of a file item, which the main thread may change while the scan thread sorts by it.
/// Former names live on as long as the item: renames are few, and so a reader needs no lock and may
/// hold on to the name that it got.
class ItemName {
public:
    explicit ItemName(QString text) : _current(new Record(std::move(text), nullptr)) {}
    ItemName(const ItemName&) = delete;
    ItemName& operator=(const ItemName&) = delete;
    ~ItemName();

    /// Valid as long as this object. Any thread.
    [[nodiscard]] const QString& text() const { return current().text; }
    /// One thread at a time.
    void setText(QString text);
    /// -1, 0 or 1 by `localizedStandardCompare`; names that are alike to it, such as "a.jpg" and
    /// "A.jpg", by their characters. Each name's sort key is made once, when it is first needed.
    /// Any thread.
    [[nodiscard]] int compare(const ItemName& other) const;

private:
    struct Record {
        Record(QString name, std::unique_ptr<const Record> before)
            : text(std::move(name)), previous(std::move(before)) {}
        [[nodiscard]] const QCollatorSortKey& sortKey() const;

        const QString text;
        const std::unique_ptr<const Record> previous;

    private:
        mutable std::optional<QCollatorSortKey> _key; // written once, before `_hasKey`
        mutable std::atomic<bool> _hasKey{false};
    };

    [[nodiscard]] const Record& current() const {
        return *_current.load(std::memory_order_acquire);
    }

    std::atomic<const Record*> _current; // owned
};

} // namespace group
