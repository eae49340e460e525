#pragma once

namespace codec {

/// Deletes an object of a C library by the library's own function; for `std::unique_ptr`.
template <auto Release>
struct Releaser {
    template <typename T>
    void operator()(T* object) const {
        Release(object);
    }
};

} // namespace codec
