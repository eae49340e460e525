#pragma once

#include "library/PBAliasObject.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// Back and forward over the folders that were selected. Main thread.
class PBPathHistory {
public:
    /// Drops what lies ahead, and goes to the new entry. The empty relative path is the root
    /// itself. Nothing where the history stands there already.
    void pushAliasObject(std::shared_ptr<PBAliasObject> aliasObject, const QString& relativePath);

    [[nodiscard]] bool canBack() const { return _position > 0; }
    [[nodiscard]] bool canForward() const {
        return _position + 1 < static_cast<std::int64_t>(_pathArray.size());
    }
    /// A folder of the history.
    struct Place {
        std::shared_ptr<PBAliasObject> aliasObject;
        QString relativePath;
    };
    /// Where the next step would lead; nothing if there is none.
    [[nodiscard]] std::optional<Place> backPlace() const;
    [[nodiscard]] std::optional<Place> forwardPlace() const;

    /// One step; the root of the entry reached, nullptr if there is none.
    std::shared_ptr<PBAliasObject> back(QString* relativePath);
    std::shared_ptr<PBAliasObject> forward(QString* relativePath);

    /// Off while a step of the history itself selects a folder.
    [[nodiscard]] bool needPush() const { return _needPush; }
    void setNeedPush(bool needPush) { _needPush = needPush; }

private:
    std::shared_ptr<PBAliasObject> stepTo(std::int64_t position, QString* relativePath);

    std::vector<Place> _pathArray;
    std::int64_t _position = -1;
    bool _needPush = true;
};
