#include "image/DecodeAhead.h"

DecodeAhead::DecodeAhead(int cores)
    : _capacity(cores > 1 ? 2 * cores : 0), _queue(QStringLiteral("decode"), cores) {}

DecodeAhead::Place DecodeAhead::takePlace() {
    if (_taken->fetch_add(1) >= _capacity) {
        _taken->fetch_sub(1);
        return nullptr;
    }
    return Place(_taken.get(), [taken = _taken](const void*) { taken->fetch_sub(1); });
}

void DecodeAhead::run(std::function<void()> work) {
    _queue.addOperation(std::move(work));
}
