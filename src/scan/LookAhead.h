#pragma once

#include "group/ImageFileRow.h"
#include "platform/files/FileManager.h"
#include "platform/tasks/OperationQueue.h"

#include <cstddef>
#include <memory>
#include <span>

/// Looks at the next files of a folder on a thread of its own, while the scan takes in those before
/// them: few at a time, so that no answer is old. Belongs to the scan thread.
class LookAhead {
public:
    LookAhead() = default;
    ~LookAhead();
    LookAhead(const LookAhead&) = delete;
    LookAhead& operator=(const LookAhead&) = delete;

    /// The files of these rows are looked at next; the rows outlive that.
    void begin(const QString& folderPath, std::span<const group::ImageFileRow> rows);
    /// The file of the row with this number, as `OpenFolder::look` has it. Rows may be left out,
    /// but come in their order. What was looked at before the count of attached operations was this
    /// one is looked at again. Blocks as long as the disk does.
    [[nodiscard]] platform::EntryLook look(std::size_t row, std::uint64_t attachedCount);

private:
    struct Files;
    void goTo(std::size_t row, std::uint64_t attachedCount);
    void stop();

    std::shared_ptr<const platform::FileManager::OpenFolder> _folder;
    std::span<const group::ImageFileRow> _rows;
    std::shared_ptr<Files>
        _present; ///< those that `look` is at; none were looked at ahead: nullptr
    std::shared_ptr<Files> _next;
    platform::OperationQueue _queue{QStringLiteral("look")};
};
