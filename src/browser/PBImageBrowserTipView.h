#pragma once

#include <QTimer>
#include <QWidget>

#include <array>
#include <cstdint>
#include <vector>

class QLabel;
class QProgressBar;
class QPushButton;

/// What covers the browser while it has nothing to show: how to begin, why it is empty, or that a
/// scan is running. Main thread.
class PBImageBrowserTipView final : public QWidget {
    Q_OBJECT

public:
    explicit PBImageBrowserTipView(QWidget* parent = nullptr);

    /// 0: hidden, the browser has photographs; 1: no folder root exists; 2: no folder is selected;
    /// 3: the folder has no photograph; 4: a scan is running.
    [[nodiscard]] std::int64_t tipKind() const { return _tipKind; }
    /// Gets the keyboard where a button of the tip had it and goes; outlives this object.
    void setFocusHeir(QWidget& widget) { _heir = &widget; }
    void setTipKind(std::int64_t tipKind);

    /// What may bring photographs into sight.
    enum class Remedy { ClearSearch, ShowAll, IncludeSubfolders };
    /// Why kind 3 shows none, and what would help; without a text it says that there are none.
    struct Reason {
        QString text;
        std::vector<Remedy> remedies;
    };
    void setReason(const Reason& reason);

    /// A folder that kind 1 offers to add with one click; none if empty.
    void setSuggestedFolder(const QString& path);

    /// What the window has to show.
    struct State {
        bool hasGroups = false;
        bool hasRoots = false;
        bool hasSelection = false; ///< of a folder
        bool isScanning = false;
    };
    /// The kind that fits it.
    [[nodiscard]] static std::int64_t kindFor(const State& state);

Q_SIGNALS:
    /// The button of kind 1 was pressed.
    void addFolderRequested();
    /// The suggested folder was chosen.
    void suggestedFolderRequested(const QString& path);
    void remedyRequested(PBImageBrowserTipView::Remedy remedy);

protected:
    void changeEvent(QEvent* event) override;

private:
    void updateColors();
    void updateIndicator();
    void updateTitle();
    void updateButtons();

    std::int64_t _tipKind = -1;
    QLabel* _picture;
    QLabel* _title;
    QLabel* _or;
    QLabel* _hint;
    QPushButton* _suggestion;
    QWidget* _heir = nullptr;
    QPushButton* _button;
    std::array<QPushButton*, 3> _remedyButtons; // in the order of Remedy
    QString _suggestedFolder;
    Reason _reason;
    QProgressBar* _indicator;
    QTimer _indicatorDelay;
};
