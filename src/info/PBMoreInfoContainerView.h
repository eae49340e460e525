#pragma once

#include "info/reading/SelectionReading.h"
#include "info/rows/MetadataMerge.h"

#include <QBasicTimer>
#include <QWidget>

#include <memory>

class InfoScrollArea;
class PBMoreInfoView;
class QLabel;
class CategorySelector;

namespace platform {
class UserDefaults;
}

/// The page with the stored metadata: a selector of categories over the rows of one of them. Main
/// thread.
class PBMoreInfoContainerView final : public QWidget {
    Q_OBJECT

public:
    /// All outlive the page.
    PBMoreInfoContainerView(
        FMDatabase& mainFileDb, platform::UserDefaults& userDefaults, QWidget* parent = nullptr);

    /// Shows these photographs from the next `updateInfos` on.
    void setSelection(PBImageFileList items);
    /// Reads everything anew; until that is there the former values stay, unless they are those of
    /// other photographs.
    void updateInfos();
    /// While it is on, nothing is read: somebody is about to write the catalogue, and a look at it
    /// would wait for that. What is not there yet is gathered afterwards.
    void setPaused(bool isPaused);
    [[nodiscard]] bool isGathering() const { return _reading && !_reading->isComplete(); }

    [[nodiscard]] const MoreInfoDict& moreInfoDict() const { return _moreInfoDict; }
    /// The key of the chosen category, as the settings have it.
    [[nodiscard]] const QString& selectInfoType() const { return _selectInfoType; }
    [[nodiscard]] PBMoreInfoView& infoView() const { return *_infoView; }
    [[nodiscard]] CategorySelector& segments() const { return *_segments; }

protected:
    void timerEvent(QTimerEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void readSome();
    void showMerged();
    void infoTypeSegClicked(int segment);
    void selectCategory(MetadataCategory category);

    FMDatabase& _database;
    platform::UserDefaults& _userDefaults;
    PBImageFileList _items;
    bool _isOtherSelection = true; ///< than that of the values that are shown
    std::unique_ptr<MoreReading> _reading;
    QBasicTimer _readTimer;
    bool _isPaused = false;
    MoreInfoDict _moreInfoDict;
    QString _selectInfoType;

    CategorySelector* _segments;
    QLabel* _label;
    PBMoreInfoView* _infoView;
    InfoScrollArea* _scrollArea;
};
