#pragma once

#include "image/codec/metadata/Bytes.h"

#include <optional>
#include <vector>

namespace codec {

/// The content of an open file, mapped so that only the pages that are looked at are read. Movable
/// by ownership only; the descriptor stays the caller's and may be closed afterwards. A file that
/// is cut while it is mapped raises SIGBUS, which costs a decoder process and nothing else.
class FileMapping {
public:
    /// Nothing for pipes, folders, devices, empty files and files above 4 GiB.
    [[nodiscard]] static std::optional<FileMapping> map(int descriptor);

    FileMapping(FileMapping&& other) noexcept;
    FileMapping& operator=(FileMapping&& other) noexcept;
    FileMapping(const FileMapping&) = delete;
    FileMapping& operator=(const FileMapping&) = delete;
    ~FileMapping();

    [[nodiscard]] Bytes bytes() const;

private:
    FileMapping() = default;

    void* _address = nullptr;
    std::size_t _size = 0;
    /// The content where the file system can't map files.
    std::vector<std::uint8_t> _copy;
};

} // namespace codec
