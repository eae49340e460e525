#pragma once

#include "info/InfoEdits.h"
#include "info/InfoRowsView.h"
#include "info/reading/SelectionReading.h"

#include <QBasicTimer>
#include <QPointer>

#include <memory>

class PBModalTextField;
class PBStarRatingCell;
class PBTagTokenField;
class QToolButton;

/// The page of general facts: thirteen rows, and the controls that mark photographs and rename one.
/// Main thread.
class PBGeneralInfoView final : public InfoRowsView {
    Q_OBJECT

public:
    /// All outlive the view.
    PBGeneralInfoView(
        FMDatabase& mainFileDb, const group::FolderPaths& folderPaths, InfoEdits& edits,
        QWidget* parent = nullptr);
    ~PBGeneralInfoView() override;

    /// Shows these photographs from the next `updateInfos` on. Ends an edit of others before; one
    /// of the same photographs goes on.
    void setSelection(InfoSelection selection);
    /// Reads everything anew; until that is there the former values stay, unless they are those of
    /// other photographs.
    void updateInfos();
    /// While it is on, nothing is read: somebody is about to write the catalogue, and a look at it
    /// would wait for that. What is not there yet is gathered afterwards.
    void setPaused(bool isPaused);
    [[nodiscard]] bool isGathering() const { return _reading && !_reading->isComplete(); }

    /// Ends an edit of name or tags, as Return does.
    void commitEditing();
    /// Opens the field for the name with this text, if the photograph is the only one shown.
    void rename(const std::shared_ptr<PBImageFileItem>& item, const QString& typedName);

    void activateRow(int row) override;

protected:
    void paintControls(QPainter& painter) override;
    bool takesPress(const QPoint& point) override;
    void addActions(QMenu& menu, int row) override;
    void metricsDidChange() override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    void makeControls();
    void readSome();
    void showMerged();
    void showControls(const GeneralMerge& merged, bool isComplete);
    void setFlagShown(bool isFlagged, bool isMixed);
    void layOutControls();
    [[nodiscard]] int tagFieldTop() const;
    [[nodiscard]] int furtherHeight() const;
    /// With the name of the only photograph that is shown.
    void beginRename();
    void flagClicked();

    FMDatabase& _database;
    const group::FolderPaths& _folderPaths;
    InfoEdits& _edits;
    InfoSelection _selection;
    bool _isOtherSelection = true; ///< than that of the values that are shown
    std::unique_ptr<GeneralReading> _reading;
    QBasicTimer _readTimer;
    bool _isPaused = false;

    QToolButton* _flagButton = nullptr;
    PBStarRatingCell* _ratingIndicator = nullptr;
    PBTagTokenField* _keywordsTokenField = nullptr;
    QPointer<PBModalTextField> _nameField;
};
