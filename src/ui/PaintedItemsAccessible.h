#pragma once

#include <QAccessibleWidget>

#include <cstdint>
#include <map>
#include <memory>

/// A view that paints its items itself, for screen readers: a list of them, with the widgets within
/// the view that take the keyboard behind. Items are made when they are asked for, and hold
/// nothing: each question is handed on to the list. Main thread.
class PaintedItemsAccessible : public QAccessibleWidget {
public:
    ~PaintedItemsAccessible() override;

    /// Makes Qt use `Accessible`, made from a `View&`, for views of that class and of those above
    /// it. Once for the process.
    template <typename Accessible, typename View>
    static void install() {
        [[maybe_unused]] static const bool done =
            (QAccessible::installFactory(make<Accessible, View>), true);
    }

    /// Hears of changes in the place of screen readers, in tests; nullptr: they do.
    static void (*listener)(QAccessibleEvent& event);

    // Tell screen readers of a view what has changed; nothing while none is running.

    /// Another item is the current one; told while the view has the focus, and when it gets it.
    static void currentDidChange(QWidget& view);
    static void selectionDidChange(QWidget& view);
    /// Other items are shown, or they say other things.
    static void itemsDidChange(QWidget& view);

    [[nodiscard]] int childCount() const final;
    [[nodiscard]] QAccessibleInterface* child(int index) const final;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const final;
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const final;
    [[nodiscard]] QAccessibleInterface* focusChild() const final;
    [[nodiscard]] QString text(QAccessible::Text kind) const final;

protected:
    struct Item {
        QAccessible::Role role = QAccessible::ListItem;
        QRect rect; ///< in the view
        bool isSelectable = true;
        bool isSelected = false;
    };

    /// `nameKey` is that of the list's name in the table of texts.
    PaintedItemsAccessible(QWidget& view, QStringView nameKey);

    // Indexes are from 0 and below `itemCount`, unless said otherwise.

    [[nodiscard]] virtual int itemCount() const = 0;
    [[nodiscard]] virtual Item item(int index) const = 0;
    [[nodiscard]] virtual QString itemText(int index, QAccessible::Text kind) const = 0;
    [[nodiscard]] virtual QStringList itemActions(int index) const = 0;
    /// One of those; the view has got the focus where that is the action.
    virtual void perform(int index, const QString& action) = 0;
    /// At a point of the view; -1 for none.
    [[nodiscard]] virtual int itemAt(const QPoint& point) const = 0;
    /// -1 for none.
    [[nodiscard]] virtual int currentItem() const = 0;
    /// Another number when items that were handed out are void.
    [[nodiscard]] virtual std::uint64_t generation() const = 0;

    /// "2 of 4"; `index` from 0.
    [[nodiscard]] static QString positionText(std::int64_t index, std::int64_t count);

private:
    class Child;

    [[nodiscard]] static bool isListening();
    static void tell(QAccessibleEvent& event);

    template <typename Accessible, typename View>
    static QAccessibleInterface* make(const QString& className, QObject* object) {
        // Asked for the class of the object and each one above it.
        if (className != QLatin1String(View::staticMetaObject.className())) return nullptr;
        auto* view = qobject_cast<View*>(object);
        return view ? std::make_unique<Accessible>(*view).release() : nullptr; // Qt owns it
    }

    [[nodiscard]] QWidget& view() const { return *widget(); }
    [[nodiscard]] QWidgetList controls() const;
    void forgetItems() const;

    const QString _name;
    mutable std::map<int, QAccessible::Id> _items;
    mutable std::uint64_t _itemsGeneration = 0; ///< that these belong to
};
