#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

/// A sequence for many elements that is copied often and changed here and there. The elements
/// stand in chunks; a copy shares them, and a chunk that is shared is copied when one of the arrays
/// changes it. So a copy costs one pointer per chunk, an insertion or removal one chunk at most,
/// wherever it happens, and the next copy after a change costs no more than the first.
///
/// An array belongs to one thread; its copies may belong to other threads, each to one. Elements
/// are reached for reading only.
template <typename T, std::size_t chunkCapacity = 256>
class SharedChunkArray {
    static_assert(chunkCapacity >= 2);
    using Chunk = std::vector<T>;

public:
    using value_type = T;
    using size_type = std::size_t;
    class const_iterator;
    using iterator = const_iterator;

    SharedChunkArray() = default;
    SharedChunkArray(const SharedChunkArray& other) : _slots(other.shared()) {}
    SharedChunkArray(SharedChunkArray&&) noexcept = default;
    SharedChunkArray& operator=(const SharedChunkArray& other) {
        if (this != &other) _slots = other.shared();
        return *this;
    }
    SharedChunkArray& operator=(SharedChunkArray&&) noexcept = default;
    ~SharedChunkArray() = default;

    [[nodiscard]] std::size_t size() const { return _slots.empty() ? 0 : _slots.back().end; }
    [[nodiscard]] bool empty() const { return _slots.empty(); }
    [[nodiscard]] const T& operator[](std::size_t index) const {
        const std::size_t slot = slotOf(index);
        return (*_slots[slot].chunk)[index - beginOf(slot)];
    }
    [[nodiscard]] const T& front() const { return _slots.front().chunk->front(); }
    [[nodiscard]] const T& back() const { return _slots.back().chunk->back(); }
    [[nodiscard]] const_iterator begin() const { return const_iterator(this, 0); }
    [[nodiscard]] const_iterator end() const { return const_iterator(this, size()); }

    void push_back(T element) { insertAt(size(), std::move(element)); }
    /// Inserts before the position.
    void insert(const const_iterator& position, T element) {
        insertAt(position.index(), std::move(element));
    }
    void erase(const const_iterator& position);
    /// Removes every element for which the predicate answers true; it is asked once for each, in
    /// order. Answers how many went.
    template <typename Predicate>
    std::size_t eraseIf(Predicate predicate);

    /// How many of its first elements another array shares with it, as far as whole chunks tell:
    /// those are the same, and others may be.
    [[nodiscard]] std::size_t commonBegin(const SharedChunkArray& other) const {
        const auto [here, there] =
            std::ranges::mismatch(_slots, other._slots, {}, &Slot::chunk, &Slot::chunk);
        return here == _slots.begin() ? 0 : std::prev(here)->end;
    }
    /// How many chunks two arrays have in common: for measuring.
    [[nodiscard]] std::size_t sharedChunks(const SharedChunkArray& other) const {
        return static_cast<std::size_t>(std::ranges::count_if(_slots, [&](const Slot& slot) {
            return std::ranges::find(other._slots, slot.chunk, &Slot::chunk) != other._slots.end();
        }));
    }

private:
    struct Slot {
        std::shared_ptr<Chunk> chunk; // never empty
        std::size_t end = 0;          // index behind the chunk's last element
        /// Some copy may hold the chunk too. Counting its owners would not do: another thread's
        /// last look at it and its letting go are not ordered before our change.
        mutable bool isShared = false;
    };

    [[nodiscard]] const std::vector<Slot>& shared() const {
        for (const Slot& slot : _slots)
            if (!slot.isShared) slot.isShared = true;
        return _slots;
    }
    [[nodiscard]] std::size_t beginOf(std::size_t slot) const {
        return slot == 0 ? 0 : _slots[slot - 1].end;
    }
    [[nodiscard]] std::size_t slotOf(std::size_t index) const {
        if (index < _slots.front().end) return 0;
        const auto found = std::ranges::upper_bound(_slots, index, {}, &Slot::end);
        return static_cast<std::size_t>(found - _slots.begin());
    }
    Chunk& ownChunk(std::size_t slot) {
        Slot& held = _slots[slot];
        if (held.isShared) {
            auto copy = std::make_shared<Chunk>();
            copy->reserve(held.chunk->size() + 1);
            copy->assign(held.chunk->begin(), held.chunk->end());
            held.chunk = std::move(copy);
            held.isShared = false;
        }
        return *held.chunk;
    }
    void insertAt(std::size_t index, T element);
    void split(std::size_t slot);

    std::vector<Slot> _slots;
};

template <typename T, std::size_t chunkCapacity>
void SharedChunkArray<T, chunkCapacity>::insertAt(std::size_t index, T element) {
    const std::size_t count = size();
    if (index == count && (_slots.empty() || _slots.back().chunk->size() >= chunkCapacity)) {
        // Elements that arrive in order fill their chunks.
        _slots.push_back({std::make_shared<Chunk>(1, std::move(element)), count + 1});
        return;
    }
    std::size_t slot = index == count ? _slots.size() - 1 : slotOf(index);
    if (_slots[slot].chunk->size() >= chunkCapacity) {
        split(slot);
        if (index > _slots[slot].end) ++slot;
    }
    Chunk& chunk = ownChunk(slot);
    chunk.insert(
        chunk.begin() + static_cast<std::ptrdiff_t>(index - beginOf(slot)), std::move(element));
    for (std::size_t later = slot; later < _slots.size(); ++later)
        ++_slots[later].end;
}

template <typename T, std::size_t chunkCapacity>
void SharedChunkArray<T, chunkCapacity>::split(std::size_t slot) {
    Chunk& lower = ownChunk(slot);
    const auto middle = lower.begin() + static_cast<std::ptrdiff_t>(lower.size() / 2);
    auto upper = std::make_shared<Chunk>(
        std::make_move_iterator(middle), std::make_move_iterator(lower.end()));
    lower.erase(middle, lower.end());
    const std::size_t end = _slots[slot].end;
    _slots[slot].end -= upper->size();
    _slots.insert(
        _slots.begin() + static_cast<std::ptrdiff_t>(slot) + 1, Slot{std::move(upper), end});
}

template <typename T, std::size_t chunkCapacity>
void SharedChunkArray<T, chunkCapacity>::erase(const const_iterator& position) {
    const std::size_t slot = slotOf(position.index());
    Chunk& chunk = ownChunk(slot);
    chunk.erase(chunk.begin() + static_cast<std::ptrdiff_t>(position.index() - beginOf(slot)));
    for (std::size_t later = slot; later < _slots.size(); ++later)
        --_slots[later].end;
    if (chunk.empty()) _slots.erase(_slots.begin() + static_cast<std::ptrdiff_t>(slot));
}

template <typename T, std::size_t chunkCapacity>
template <typename Predicate>
std::size_t SharedChunkArray<T, chunkCapacity>::eraseIf(Predicate predicate) {
    std::size_t removed = 0;
    for (std::size_t slot = 0; slot < _slots.size(); ++slot) {
        const Chunk& chunk = *_slots[slot].chunk;
        std::vector<bool> leaves(chunk.size());
        for (std::size_t index = 0; index < chunk.size(); ++index)
            leaves[index] = predicate(chunk[index]);
        const auto count = static_cast<std::size_t>(std::ranges::count(leaves, true));
        if (count > 0) {
            auto kept = std::make_shared<Chunk>();
            kept->reserve(chunk.size() - count);
            for (std::size_t index = 0; index < chunk.size(); ++index)
                if (!leaves[index]) kept->push_back(chunk[index]);
            _slots[slot].chunk = std::move(kept);
            _slots[slot].isShared = false;
        }
        removed += count;
        _slots[slot].end -= removed;
    }
    std::erase_if(_slots, [](const Slot& slot) { return slot.chunk->empty(); });
    return removed;
}

/// A position of the array; steps within a chunk cost as much as those of a vector.
template <typename T, std::size_t chunkCapacity>
class SharedChunkArray<T, chunkCapacity>::const_iterator {
public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = const T*;
    using reference = const T&;

    const_iterator() = default;
    const_iterator(const SharedChunkArray* array, std::size_t index)
        : _array(array), _index(index) {}

    [[nodiscard]] std::size_t index() const { return _index; }
    reference operator*() const {
        if (_index < _begin || _index >= _end) {
            const std::size_t slot = _array->slotOf(_index);
            _begin = _array->beginOf(slot);
            _end = _array->_slots[slot].end;
            _elements = _array->_slots[slot].chunk->data();
        }
        return _elements[_index - _begin];
    }
    pointer operator->() const { return &**this; }
    reference operator[](difference_type offset) const { return *(*this + offset); }

    const_iterator& operator+=(difference_type offset) {
        _index = static_cast<std::size_t>(static_cast<difference_type>(_index) + offset);
        return *this;
    }
    const_iterator& operator-=(difference_type offset) { return *this += -offset; }
    const_iterator& operator++() { return *this += 1; }
    const_iterator& operator--() { return *this += -1; }
    const_iterator operator++(int) {
        const const_iterator before = *this;
        ++*this;
        return before;
    }
    const_iterator operator--(int) {
        const const_iterator before = *this;
        --*this;
        return before;
    }
    friend const_iterator operator+(const_iterator position, difference_type offset) {
        return position += offset;
    }
    friend const_iterator operator+(difference_type offset, const_iterator position) {
        return position += offset;
    }
    friend const_iterator operator-(const_iterator position, difference_type offset) {
        return position -= offset;
    }
    friend difference_type operator-(const const_iterator& left, const const_iterator& right) {
        return static_cast<difference_type>(left._index) -
               static_cast<difference_type>(right._index);
    }
    friend bool operator==(const const_iterator& left, const const_iterator& right) {
        return left._index == right._index;
    }
    friend auto operator<=>(const const_iterator& left, const const_iterator& right) {
        return left._index <=> right._index;
    }

private:
    const SharedChunkArray* _array = nullptr;
    std::size_t _index = 0;
    // The chunk that was read last.
    mutable std::size_t _begin = 0;
    mutable std::size_t _end = 0;
    mutable const T* _elements = nullptr;
};
