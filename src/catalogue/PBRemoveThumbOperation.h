#pragma once

#include "platform/Operation.h"

#include <cstdint>
#include <vector>

class FMDatabase;

/// Removes the thumbnails of images that left the catalogue, all in one transaction.
class PBRemoveThumbOperation final : public platform::Operation {
public:
    /// `db` is the connection to `thumbnail.db` that belongs to the queue; it outlives the
    /// operation.
    PBRemoveThumbOperation(std::vector<std::int64_t> fileArray, FMDatabase& db);

protected:
    void main() override;

private:
    const std::vector<std::int64_t> _fileArray; // ids
    FMDatabase& _db;
};
