#pragma once

#include "info/InfoRowsView.h"
#include "info/rows/MetadataMerge.h"

#include <optional>

class QToolButton;

/// The rows of one category of stored metadata, with a way to the map below a position. Main
/// thread.
class PBMoreInfoView final : public InfoRowsView {
    Q_OBJECT

public:
    explicit PBMoreInfoView(QWidget* parent = nullptr);

    [[nodiscard]] qint64 selectCount() const { return _selectCount; }
    /// Of how many photographs the values are.
    void setSelectCount(qint64 count) { _selectCount = count; }
    [[nodiscard]] std::optional<MetadataCategory> selectInfoType() const { return _selectInfoType; }
    /// Nothing: no category is there to be shown.
    void setSelectInfoType(std::optional<MetadataCategory> category) { _selectInfoType = category; }
    /// Not all photographs were read yet.
    void showGathering();
    void showUnreadable();
    /// Shows what these say of the category.
    void updateInfo(const MoreInfoDict& dictionaries);

    /// "geo:52.5,13.4"
    [[nodiscard]] static QString geoAddress(const PBLocation& location);

protected:
    void addActions(QMenu& menu, int row) override;
    void metricsDidChange() override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void clear(QStringView textKey);
    void placeMapButton();
    void openMap() const;

    qint64 _selectCount = 0;
    std::optional<MetadataCategory> _selectInfoType;
    std::optional<PBLocation> _location; ///< of the rows that are shown
    bool _hasMapProgram = false;
    QToolButton* _mapButton;
};
