#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

/// Sorted arrays whose elements answer `sortCompare(other, context)` with -1, 0 or 1 (a file item
/// also with -2 for no defined order, which counts as 1 here).
///
/// Elements are held by pointer: shared (file items) or owned (groups). `order` true is descending.

/// The index that stands for "not in the array".
inline constexpr std::int64_t NSNotFound = std::numeric_limits<std::int64_t>::max();

namespace core {

/// The part of a sorted array in which an element can still be found or has its place. Insertion
/// and search share its steps, so that both see the same elements in the same order: where some
/// elements have no defined order, an element is found again where it was inserted.
class BinaryProbe {
public:
    explicit BinaryProbe(std::size_t count) : _high(count), _open(count > 0) {}

    /// False once the place is settled.
    [[nodiscard]] bool isOpen() const { return _open; }
    [[nodiscard]] std::size_t middle() const { return _low + (_high - _low) / 2; }
    /// Where an element that was not found belongs.
    [[nodiscard]] std::size_t place() const { return _high; }

    void moveLeft() {
        const std::size_t probed = middle();
        _high = probed;
        _open = _low != probed;
    }
    void moveRight() {
        const std::size_t probed = middle();
        _low = _low == probed ? _high : probed;
        _open = _low != _high;
    }
    /// The step after the element in the middle compared as `result` with the one sought.
    void move(std::int64_t result, bool order) {
        if ((result == -1) == order) {
            moveLeft();
        } else {
            moveRight();
        }
    }

private:
    std::size_t _low = 0;
    std::size_t _high;
    bool _open;
};

} // namespace core

/// What becomes of an element that is equal to one in the array.
enum class EqualElements { Refused, AddedBehind };

/// Inserts `object` keeping the order, by binary search. Answers the object inserted, or the equal
/// element that is there already, in which case `object` is dropped; unless equal elements are to
/// go behind those already there. The array is a vector of pointers or anything that is
/// indexed and inserted into like one.
template <typename Array, typename Context>
typename std::pointer_traits<typename Array::value_type>::element_type* sortAddObject(
    Array& array, typename Array::value_type object, const Context& context, bool order,
    EqualElements equalElements) {
    core::BinaryProbe probe(array.size());
    while (probe.isOpen()) {
        auto* element = std::to_address(array[probe.middle()]);
        if (element == std::to_address(object)) return element;
        const std::int64_t result = element->sortCompare(*object, context);
        if (result != 0) {
            probe.move(result, order);
        } else if (equalElements == EqualElements::AddedBehind) {
            probe.moveRight();
        } else {
            return element;
        }
    }
    auto* inserted = std::to_address(object);
    array.insert(array.begin() + static_cast<std::ptrdiff_t>(probe.place()), std::move(object));
    return inserted;
}

/// The index of the element that is `object` or equal to it, else `NSNotFound`. The array is any
/// sequence of pointers.
template <typename Array, typename T, typename Context>
[[nodiscard]] std::int64_t
sortIndexOfObject(const Array& array, const T& object, const Context& context, bool order) {
    core::BinaryProbe probe(array.size());
    while (probe.isOpen()) {
        const auto* element = std::to_address(array[probe.middle()]);
        if (element == &object) return static_cast<std::int64_t>(probe.middle());
        const std::int64_t result = element->sortCompare(object, context);
        if (result == 0) return static_cast<std::int64_t>(probe.middle());
        probe.move(result, order);
    }
    return NSNotFound;
}
