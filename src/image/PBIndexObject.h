#pragma once

#include <cstdint>
#include <utility>

/// An object with its position, sortable by that.
template <typename Object>
class PBIndexObject {
public:
    PBIndexObject(std::int64_t index, Object object) : _index(index), _object(std::move(object)) {}

    [[nodiscard]] std::int64_t index() const { return _index; }
    [[nodiscard]] const Object& object() const { return _object; }
    [[nodiscard]] Object& object() { return _object; }

    /// -1, 0 or 1 by the positions; the context says nothing.
    [[nodiscard]] std::int64_t sortCompare(const PBIndexObject& other, int /*context*/) const {
        return _index < other._index ? -1 : _index > other._index ? 1 : 0;
    }

private:
    std::int64_t _index;
    Object _object;
};
