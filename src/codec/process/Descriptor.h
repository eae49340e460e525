#pragma once

#include <utility>

#include <unistd.h>

namespace codec::process {

/// An open file descriptor that this object owns; -1 for none.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int descriptor) : _descriptor(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(_descriptor, other._descriptor);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (_descriptor >= 0) ::close(_descriptor);
    }

    [[nodiscard]] int get() const { return _descriptor; }
    [[nodiscard]] bool isOpen() const { return _descriptor >= 0; }

private:
    int _descriptor = -1;
};

} // namespace codec::process
