#pragma once

#include "codec/process/FrameReader.h"
#include "codec/process/HelperShelf.h"

#include <chrono>

namespace codec::process {

/// A sequence whose canvas stays in a decoder process that nobody else is given meanwhile. A
/// process that is lost ends the sequence.
class HelperSequence final : public FrameSequence {
public:
    /// Opens the file in a process. `time`: for the opening, and for each frame.
    [[nodiscard]] static OpenedSequence open(
        std::shared_ptr<HelperShelf> shelf, int descriptor, const QString& typeHint,
        const DecodeRequest& request, std::chrono::milliseconds time, const std::stop_token& stop);
    ~HelperSequence() override;

    [[nodiscard]] std::size_t frameCount() const override { return _count; }
    [[nodiscard]] SequenceFrame next(std::stop_token stop) override;
    void rewind() override;

private:
    HelperSequence(
        std::unique_ptr<HelperShelf::Lease> lease, MemoryBudget::Share memory,
        DecodeRequest request, std::chrono::milliseconds time, std::size_t count)
        : _lease(std::move(lease)), _memory(std::move(memory)), _request(std::move(request)),
          _time(time), _count(count) {}

    const std::unique_ptr<HelperShelf::Lease> _lease;
    const MemoryBudget::Share _memory;
    DecodeRequest _request;
    const std::chrono::milliseconds _time;
    const std::size_t _count;
    bool _isOver = false;
};

} // namespace codec::process
