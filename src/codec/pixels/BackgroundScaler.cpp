#include "codec/pixels/BackgroundScaler.h"

#include <algorithm>
#include <cstring>

namespace codec {

namespace {

/// Stays in a core's cache, and is worth waking a thread for.
constexpr std::size_t bytesPerBlock = 128 * 1024;

} // namespace

BackgroundScaler::BackgroundScaler(RowScaler& scaler, std::size_t bytesPerRow)
    : _scaler(scaler), _bytesPerRow(bytesPerRow),
      _rowsPerBlock(std::max<std::size_t>(bytesPerBlock / bytesPerRow, 1)) {
    for (Block& block : _blocks)
        block.rows.resize(_rowsPerBlock * _bytesPerRow);
    _thread = std::jthread([this] { run(); });
}

BackgroundScaler::~BackgroundScaler() {
    finish();
}

void BackgroundScaler::addRow(const void* row) {
    Block& block = _blocks[_block];
    std::memcpy(block.rows.data() + block.count * _bytesPerRow, row, _bytesPerRow);
    if (++block.count == _rowsPerBlock) hand();
}

void BackgroundScaler::hand() {
    _filled.release();
    _empty.acquire();
    _block = (_block + 1) % _blocks.size();
    _blocks[_block].count = 0;
}

void BackgroundScaler::finish() {
    if (_isFinished) return;
    _isFinished = true;
    if (_blocks[_block].count > 0) hand();
    _filled.release(); // of the one without rows
    _thread.join();
}

void BackgroundScaler::run() {
    for (std::size_t index = 0;; index = (index + 1) % _blocks.size()) {
        _filled.acquire();
        const Block& block = _blocks[index];
        if (block.count == 0) return;
        for (std::size_t row = 0; row < block.count; ++row)
            _scaler.addRow(block.rows.data() + row * _bytesPerRow);
        _empty.release();
    }
}

} // namespace codec
