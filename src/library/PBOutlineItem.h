#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class PBOutlineItem;
using PBOutlineItems = std::vector<std::shared_ptr<PBOutlineItem>>;

/// Base of all items of the sidebar's tree. Main thread.
class PBOutlineItem : public std::enable_shared_from_this<PBOutlineItem> {
public:
    PBOutlineItem() = default;
    PBOutlineItem(const PBOutlineItem&) = delete;
    PBOutlineItem& operator=(const PBOutlineItem&) = delete;
    virtual ~PBOutlineItem() = default;

    [[nodiscard]] virtual QString displayName() const { return {}; }
    /// The second line of the row.
    [[nodiscard]] virtual QString description() const { return {}; }
    [[nodiscard]] virtual QString tip() const { return {}; }
    /// Names of the row's icons, the later ones drawn over the first as badges.
    [[nodiscard]] virtual QStringList displayIcons() const { return {}; }
    /// May start to load them.
    [[nodiscard]] virtual PBOutlineItems children() { return {}; }
};
