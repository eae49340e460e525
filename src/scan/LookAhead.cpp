#include "scan/LookAhead.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <utility>

using platform::EntryLook;

namespace {

/// On a local disk less than a millisecond's work.
constexpr std::size_t filesTogether = 64;

} // namespace

/// Files that are looked at together, each by whoever comes to it first.
struct LookAhead::Files {
    enum State { Waiting, Taken, Looked };
    struct File {
        QString name;
        EntryLook look;
        std::atomic<int> state = Waiting;

        [[nodiscard]] bool take() {
            int expected = Waiting;
            return state.compare_exchange_strong(expected, Taken);
        }
    };

    void lookAtAll() {
        for (std::size_t index = 0; index < count && !isStopped; ++index) {
            File& file = files[index];
            if (!file.take()) continue;
            file.look = folder->look(file.name);
            file.state = Looked;
            file.state.notify_one();
        }
    }

    std::shared_ptr<const platform::FileManager::OpenFolder> folder;
    std::size_t first = 0; ///< row
    std::size_t count = 0;
    std::uint64_t attachedCount = 0; ///< when they were about to be looked at
    std::atomic<bool> isStopped = false;
    std::array<File, filesTogether> files;
};

LookAhead::~LookAhead() {
    stop();
}

void LookAhead::stop() {
    for (auto* files : {&_present, &_next}) {
        if (*files) (*files)->isStopped = true;
        files->reset();
    }
}

void LookAhead::begin(const QString& folderPath, std::span<const group::ImageFileRow> rows) {
    stop();
    _folder = std::make_shared<const platform::FileManager::OpenFolder>(folderPath);
    _rows = rows;
}

EntryLook LookAhead::look(std::size_t row, std::uint64_t attachedCount) {
    goTo(row, attachedCount);
    const auto lookNow = [&] { return _folder->look(_rows[row].fileName); };
    if (!_present || _present->attachedCount != attachedCount) return lookNow();
    Files::File& file = _present->files[row - _present->first];
    if (file.take()) return lookNow();
    file.state.wait(Files::Taken);
    return file.look;
}

void LookAhead::goTo(std::size_t row, std::uint64_t attachedCount) {
    const std::size_t first = row - row % filesTogether;
    if (_present && _present->first == first) return;
    const std::size_t next = first + filesTogether;
    if (_next && _next->first == next) return;
    _present = std::exchange(_next, nullptr);
    if (_present && _present->first != first) _present.reset();
    if (next >= _rows.size()) return;
    _next = std::make_shared<Files>();
    _next->folder = _folder;
    _next->first = next;
    _next->count = std::min(filesTogether, _rows.size() - next);
    _next->attachedCount = attachedCount;
    for (std::size_t index = 0; index < _next->count; ++index)
        _next->files[index].name = _rows[next + index].fileName;
    _queue.addOperation([files = _next] { files->lookAtAll(); });
}
