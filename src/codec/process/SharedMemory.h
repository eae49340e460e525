#pragma once

#include "codec/process/Descriptor.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace codec::process {

/// Memory without a name that can be handed to another process. Its size is fixed for good, so
/// that neither side can take pages away under the other; pages cost nothing until they are
/// touched.
[[nodiscard]] Descriptor makeSharedMemory(std::uint64_t bytes);

/// A piece of shared memory, from its start, in this process.
class Mapping {
public:
    enum class Access { Read, ReadWrite };

    /// Nothing when the memory is smaller than that, or can't be mapped.
    [[nodiscard]] static std::optional<Mapping>
    of(int descriptor, std::size_t bytes, Access access);

    Mapping(Mapping&& other) noexcept;
    Mapping& operator=(Mapping&& other) noexcept;
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;
    ~Mapping();

    [[nodiscard]] void* data() const { return _data; }
    [[nodiscard]] std::size_t size() const { return _size; }

private:
    Mapping(void* data, std::size_t size) : _data(data), _size(size) {}

    void* _data = nullptr;
    std::size_t _size = 0;
};

} // namespace codec::process
