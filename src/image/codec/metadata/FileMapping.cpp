#include "image/codec/metadata/FileMapping.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace codec {

namespace {

constexpr off_t largestFile = off_t(4) << 30;
/// Where nothing can be mapped, what a header may need is read instead.
constexpr std::size_t largestCopy = std::size_t(64) << 20;

std::vector<std::uint8_t> readStart(int descriptor, std::size_t size) {
    std::vector<std::uint8_t> content(std::min(size, largestCopy));
    std::size_t filled = 0;
    while (filled < content.size()) {
        const ssize_t count = pread(
            descriptor, content.data() + filled, content.size() - filled,
            static_cast<off_t>(filled));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        filled += static_cast<std::size_t>(count);
    }
    content.resize(filled);
    return content;
}

} // namespace

std::optional<FileMapping> FileMapping::map(int descriptor) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    if (status.st_size <= 0 || status.st_size > largestFile) return std::nullopt;
    FileMapping mapping;
    const auto size = static_cast<std::size_t>(status.st_size);
    void* address = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (address != MAP_FAILED) {
        mapping._address = address;
        mapping._size = size;
        return mapping;
    }
    mapping._copy = readStart(descriptor, size);
    if (mapping._copy.empty()) return std::nullopt;
    return mapping;
}

FileMapping::FileMapping(FileMapping&& other) noexcept
    : _address(std::exchange(other._address, nullptr)), _size(std::exchange(other._size, 0)),
      _copy(std::move(other._copy)) {}

FileMapping& FileMapping::operator=(FileMapping&& other) noexcept {
    std::swap(_address, other._address);
    std::swap(_size, other._size);
    std::swap(_copy, other._copy);
    return *this;
}

FileMapping::~FileMapping() {
    if (_address) munmap(_address, _size);
}

Bytes FileMapping::bytes() const {
    if (_address) return Bytes({static_cast<const std::uint8_t*>(_address), _size});
    return Bytes(_copy);
}

} // namespace codec
