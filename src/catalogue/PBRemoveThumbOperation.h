#pragma once

#include "platform/tasks/Operation.h"

#include <QtGlobal>

#include <vector>

class FMDatabase;

/// Removes the thumbnails of images that left the catalogue, all in one transaction.
class PBRemoveThumbOperation final : public platform::Operation {
public:
    /// `db` is the connection to `thumbnail.db` that belongs to the queue; it outlives the
    /// operation.
    PBRemoveThumbOperation(std::vector<qint64> fileArray, FMDatabase& db);

protected:
    void main() override;

private:
    const std::vector<qint64> _fileArray; // ids
    FMDatabase& _db;
};
