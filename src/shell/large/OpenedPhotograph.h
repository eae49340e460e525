#pragma once

#include "core/OpenFilesRequest.h"
#include "group/FolderPaths.h"

#include <QString>

#include <functional>
#include <memory>

class PBImageFileItem;
struct ShellServices;

/// The photograph that a request to open files is about, until a scan has come to it. What can be
/// known of it sooner, by the catalogue's row, or by the file and the ledger, makes an item that
/// stands in for that of the scan; nothing but its picture is to be had of it. Main thread.
class OpenedPhotograph final : public group::FolderPaths {
public:
    struct Parts {
        const ShellServices& services;
        const group::FolderPaths& folderPaths;
        /// There is a stand-in now; never called from within `begin`.
        std::function<void()> standInCame;
    };

    /// The parts outlive this object.
    explicit OpenedPhotograph(Parts parts);
    ~OpenedPhotograph() override;

    /// The request is about that file; about none where it is empty.
    void begin(const OpenFilesRequest::NamedFile& file);
    /// Awaits the photograph of which there is a picture already.
    void await(const OpenFilesRequest::NamedFile& file);
    /// Nobody looks at the stand-in any more; the photograph itself is awaited still.
    void dropStandIn();
    /// The photograph is there, or does not come.
    void end();
    [[nodiscard]] bool isAwaited() const { return !_name.isEmpty(); }

    /// May be nullptr.
    [[nodiscard]] const std::shared_ptr<PBImageFileItem>& standIn() const { return _standIn; }
    /// Whether the item of a scan is that of the photograph.
    [[nodiscard]] bool isIt(const PBImageFileItem& item) const;

    /// As the catalogue has it; the stand-in's folder may have no row there.
    [[nodiscard]] QString pathOfFolderId(qint64 folderId) const override;

private:
    [[nodiscard]] QString path() const;
    /// The item of the catalogue's row, if the file is as that says.
    [[nodiscard]] std::shared_ptr<PBImageFileItem>
    cataloguedItem(const platform::ResourceValues& values) const;
    void makeStandInFromFile();

    const Parts _parts;
    QString _folderPath;
    QString _name;
    std::shared_ptr<PBImageFileItem> _standIn;
    /// Of the latest request; looked at on the main thread only.
    std::shared_ptr<bool> _alive;
};
