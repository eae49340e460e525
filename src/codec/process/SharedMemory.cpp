#include "codec/process/SharedMemory.h"

#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace codec::process {

Descriptor makeSharedMemory(std::uint64_t bytes) {
    Descriptor memory(::memfd_create("velmora-picture", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!memory.isOpen() || ::ftruncate(memory.get(), static_cast<off_t>(bytes)) != 0 ||
        ::fcntl(memory.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0) {
        return {};
    }
    return memory;
}

std::optional<Mapping> Mapping::of(int descriptor, std::size_t bytes, Access access) {
    struct stat status {};
    if (bytes == 0 || ::fstat(descriptor, &status) != 0 ||
        static_cast<std::uint64_t>(status.st_size) < bytes) {
        return std::nullopt;
    }
    const int protection = access == Access::Read ? PROT_READ : PROT_READ | PROT_WRITE;
    void* data = ::mmap(nullptr, bytes, protection, MAP_SHARED, descriptor, 0);
    if (data == MAP_FAILED) return std::nullopt;
    return Mapping(data, bytes);
}

Mapping::Mapping(Mapping&& other) noexcept
    : _data(std::exchange(other._data, nullptr)), _size(std::exchange(other._size, 0)) {}

Mapping& Mapping::operator=(Mapping&& other) noexcept {
    std::swap(_data, other._data);
    std::swap(_size, other._size);
    return *this;
}

Mapping::~Mapping() {
    if (_data) ::munmap(_data, _size);
}

} // namespace codec::process
