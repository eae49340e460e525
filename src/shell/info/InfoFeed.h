#pragma once

#include "group/FolderPaths.h"
#include "info/InfoEdits.h"
#include "shell/commands/RenameCommand.h"

#include <QBasicTimer>
#include <QObject>
#include <QPointer>
#include <QWidget>

#include <memory>

class BrowserPane;
class ChosenPhotographs;
class InfoPane;
struct ShellServices;

namespace fileactions {
struct EditResult;
}

/// Connects the information panel with the rest of the window: brings it what is selected, and what
/// the user edits there to whoever performs edits. Main thread.
class InfoFeed final : public QObject, private InfoEdits {
    Q_OBJECT

public:
    /// Makes the pane, whose place is the caller's choice; it must go before this object.
    explicit InfoFeed(const ShellServices& services);
    ~InfoFeed() override;

    [[nodiscard]] InfoPane& pane() const { return *_pane; }

    struct Parts {
        /// What edits are about, and in the large view also what is shown.
        const ChosenPhotographs& chosen;
        BrowserPane& browserPane;
        QWidget& window;
    };
    /// Once; the parts outlive this object.
    void connectWindow(const Parts& parts);

    /// Over which a flag shows that was set or taken away, while the browser is out of sight; the
    /// window itself without one.
    void setLargeView(QWidget* view) { _largeView = view; }

    /// Other photographs are selected, or the same ones are others now. Brings them to the panel
    /// when the present event is over.
    void selectionDidChange();
    /// The catalogue says other things of the photographs that are selected.
    void updateInfo();

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void toggleFlag(const PBImageFileList& items) override;
    void setStar(const PBImageFileList& items, int star) override;
    void changeTags(const PBImageFileList& items, const TagsChange& change) override;
    void rename(const std::shared_ptr<PBImageFileItem>& item, const QString& typedName) override;
    void feed();
    void didEdit(const fileactions::EditResult& result);
    [[nodiscard]] InfoSelection selection() const;

    const ShellServices& _services;
    const group::CatalogueFolderPaths _folderPaths;
    InfoPane* _pane;
    std::unique_ptr<const Parts> _parts;
    std::unique_ptr<RenameCommand> _rename;
    QPointer<QWidget> _largeView;
    InfoSelection _fed;
    bool _isOutOfDate = true; ///< what was fed is to be read again
    QBasicTimer _feedTimer;
};
