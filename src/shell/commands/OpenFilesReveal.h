#pragma once

#include "core/PBOpenFiles.h"
#include "image/PBImageBrowserIndex.h"

#include <QObject>
#include <QString>

#include <functional>
#include <vector>

class BrowserPane;
class SourceTreeController;

/// Waits for opened files to appear in the browser, then selects them and scrolls to the first. It
/// gives up when the user does something else, or when the scan has ended without them. Main
/// thread.
class OpenFilesReveal final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        BrowserPane& browserPane;
        SourceTreeController& tree;
        std::function<bool()> isScanning;
        /// The request is done with.
        std::function<void()> dropRequest;
    };

    /// The parts outlive this object.
    OpenFilesReveal(Parts parts, QObject* parent);

    /// Waits for the files of the request in the folder that is about to be selected.
    void begin(std::shared_ptr<PBOpenFiles> openFiles, const QString& folder);
    void end();
    /// The scan began or ended.
    void scanStateDidChange();

    /// Files that were opened are still to be selected.
    [[nodiscard]] bool isWaiting() const { return _openFiles != nullptr; }

private:
    void look();
    [[nodiscard]] std::vector<PBImageBrowserIndex> found() const;
    void folderDidChange();

    const Parts _parts;
    std::shared_ptr<PBOpenFiles> _openFiles;
    QStringList _wantedNames; // of files, in any folder of the request
    QString _folder;
    bool _isSelecting = false;
};
