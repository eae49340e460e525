#pragma once

#include "codec/pixels/RowScaler.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <semaphore>
#include <thread>
#include <vector>

namespace codec {

/// Hands rows on to a scaler on a thread of its own, while the next ones are decoded. Belongs to
/// one thread; nobody else uses the scaler meanwhile.
class BackgroundScaler final : public RowScaler {
public:
    /// The scaler outlives this object. Throws `std::system_error` where no thread can be had.
    BackgroundScaler(RowScaler& scaler, std::size_t bytesPerRow);
    ~BackgroundScaler() override;

    /// Takes a copy of the row; waits while too many are on their way.
    void addRow(const void* row) override;
    /// Returns when the scaler has had all rows; there are no others after that.
    void finish();

private:
    struct Block {
        std::vector<std::uint8_t> rows;
        std::size_t count = 0; ///< none: this is the end
    };
    static constexpr std::ptrdiff_t blockCount = 4;

    void hand();
    void run();

    RowScaler& _scaler;
    const std::size_t _bytesPerRow;
    const std::size_t _rowsPerBlock;
    // A block belongs to whoever took it by one of the two.
    std::array<Block, blockCount> _blocks;
    std::counting_semaphore<blockCount> _empty{blockCount - 1}; // but for the one that is filled
    std::counting_semaphore<blockCount> _filled{0};
    std::size_t _block = 0; // that is filled
    bool _isFinished = false;
    std::jthread _thread; // uses what is above
};

} // namespace codec
