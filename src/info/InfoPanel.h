#pragma once

#include "info/InfoEdits.h"

#include <QWidget>

#include <memory>

class FMDatabase;
class PBGeneralInfoView;
class PBMoreInfoContainerView;
class QStackedWidget;

namespace group {
class FolderPaths;
}
namespace platform {
class UserDefaults;
}

/// What is known of the selected photographs, on two pages: general facts and marks, which can be
/// edited, and what the camera stored. Only the page on show reads the catalogue, some milliseconds
/// at a time, and neither while the panel is hidden. The panel has no bar of its own and no segment
/// of pages: whoever places it has those, and may place it elsewhere at any time. Main thread.
class InfoPanel final : public QWidget {
    Q_OBJECT

public:
    enum Page { General = 0, More = 1 };

    /// All outlive the panel.
    struct Parts {
        FMDatabase& mainFileDb;
        const group::FolderPaths& folderPaths;
        platform::UserDefaults& userDefaults;
        InfoEdits& edits;
    };

    explicit InfoPanel(const Parts& parts, QWidget* parent = nullptr);
    ~InfoPanel() override;

    [[nodiscard]] int selectedInfo() const;
    /// A page of `Page`.
    void selectInfo(int page);

    /// Shows these photographs from now on. An edit that was begun is asked for first, for those
    /// that were shown when it began, unless they are the same ones.
    void setSelection(InfoSelection selection);
    /// Something in the catalogue changed: reads again what is shown.
    void updateInfo();
    /// While it is on, nothing is read: somebody is about to write the catalogue, and a look at it
    /// would wait for that. What is not there yet is gathered afterwards.
    void setPaused(bool isPaused);
    /// Asks for an edit that was begun, if there is one, as Return does.
    void commitEditing();
    /// Opens the field for the name with what was typed, unless another photograph is shown.
    void renameAgain(const std::shared_ptr<PBImageFileItem>& item, const QString& typedName);

    /// The page on show was not read to the end yet.
    [[nodiscard]] bool isGathering() const;
    /// A pane that is folded away is disabled.
    [[nodiscard]] bool isOnShow() const { return isVisible() && isEnabled(); }
    /// What the panel is about, in words: for the bar over it.
    [[nodiscard]] QString title() const;
    [[nodiscard]] PBGeneralInfoView& generalInfoView() const { return *_general; }

Q_SIGNALS:
    void titleDidChange(const QString& title);
    /// What was selected meanwhile may not have been brought here.
    void didComeOnShow();

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void noteOnShow();

    QStackedWidget* _pages;
    PBGeneralInfoView* _general;
    PBMoreInfoContainerView* _more;
    InfoSelection _selection;
    bool _wasOnShow = false;
    bool _isOutOfDate = true; ///< the page on show was not read since something changed
};
