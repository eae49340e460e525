#pragma once

#include <atomic>
#include <cstdint>
#include <stop_token>
#include <utility>

namespace codec {

/// Asks a running decode to end: by a token, or by a number in shared memory that another process
/// sets to the number of the request.
class StopFlag {
public:
    StopFlag() = default;
    StopFlag(std::stop_token token) : _token(std::move(token)) {}
    StopFlag(const std::atomic<std::uint32_t>* shared, std::uint32_t request)
        : _shared(shared), _request(request) {}

    [[nodiscard]] bool isSet() const {
        return _token.stop_requested() ||
               (_shared && _shared->load(std::memory_order_relaxed) == _request);
    }

private:
    std::stop_token _token;
    const std::atomic<std::uint32_t>* _shared = nullptr;
    std::uint32_t _request = 0;
};

} // namespace codec
