#pragma once

#include "catalogue/marks/EditedRows.h"
#include "group/PBGroupTreeDataSource.h"
#include "scan/ScanFactory.h"

#include <functional>
#include <vector>

namespace fileactions {

/// What of photographs may be other than it is shown.
enum ShownField : unsigned {
    ShownStars = 1,
    ShownFlag = 2,
    ShownTags = 4,
    ShownRotation = 8,
    ShownName = 16,
    ShownAll = 31,
};

/// Brings what is on show in step with the catalogue: the items, the live tree, and the work tree.
/// Main thread.
class ShownPhotographs {
public:
    struct Environment {
        PBGroupTreeDataSource& source;
        const ScanFactory& factory;
        /// How the user browses now.
        std::function<ScanBrowsing()> browsing;
        /// Called with photographs whose items don't have what the catalogue says: `show` is to be
        /// called for them, too. On the scan thread.
        std::function<void(std::vector<qint64> fileIds)> readAgain;
    };
    /// All outlives this object, or what it attaches to scans, as far as that needs it.
    explicit ShownPhotographs(Environment environment) : _environment(std::move(environment)) {}

    /// Of the rows, which are those of the catalogue now, the fields may have changed. Photographs
    /// that search text or filter leave out go from the live tree at once; answers whether any did.
    bool show(const std::vector<marks::ShownRow>& rows, unsigned fields);

    /// Whether a change of these fields can move a photograph to another group or place, or out of
    /// the tree.
    [[nodiscard]] static bool canMove(unsigned fields, const ScanBrowsing& browsing);

private:
    const Environment _environment;
};

} // namespace fileactions
