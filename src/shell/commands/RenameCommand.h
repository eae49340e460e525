#pragma once

#include <QString>

#include <functional>
#include <memory>

class BrowserPane;
class FMDatabase;
class PBImageFileItem;

/// The rename of a photograph in its place in the browser. Main thread.
class RenameCommand {
public:
    struct Parts {
        FMDatabase& mainFileDb;
        BrowserPane& browserPane;
        /// Tells the user that the file keeps its name, and why.
        std::function<void(const QString& fileName, const QString& reason)> alert;
    };

    /// The parts outlive this object.
    explicit RenameCommand(Parts parts) : _parts(std::move(parts)) {}

    /// Opens the field for the name of the selected photograph, if there is just one.
    void begin();
    void finish(const std::shared_ptr<PBImageFileItem>& item, const QString& fileName);

private:
    const Parts _parts;
};
