#pragma once

#include <QString>

#include <functional>
#include <memory>

class BrowserPane;
class PBImageFileItem;
class QWidget;

namespace fileactions {
class EditRunner;
struct NameToGive;
} // namespace fileactions

/// The rename of a photograph in its place in the browser. Main thread.
class RenameCommand {
public:
    struct Parts {
        fileactions::EditRunner& edits;
        BrowserPane& browserPane;
        QWidget& window;
        /// Opens the field again with what was typed; empty for that of the browser.
        std::function<void(const std::shared_ptr<PBImageFileItem>&, const QString&)> typeAgain = {};
    };

    /// The parts outlive this object, which outlives the window's dialogs.
    explicit RenameCommand(const Parts& parts) : _parts(parts) {}

    /// Opens the field for the name of the selected photograph, if there is just one.
    void begin();
    /// Takes what was typed. Asks where the name makes another kind of file of it, or hides it;
    /// where the user doesn't want that, or it can't be done, the field is there again with the
    /// typed text.
    void finish(const std::shared_ptr<PBImageFileItem>& item, const QString& typed);

private:
    void
    ask(const std::shared_ptr<PBImageFileItem>& item, const QString& typed,
        const fileactions::NameToGive& given);
    /// Asks where the name would hide the file.
    void giveUnlessHidden(
        const std::shared_ptr<PBImageFileItem>& item, const QString& typed, const QString& name,
        bool isHidden);
    void
    give(const std::shared_ptr<PBImageFileItem>& item, const QString& typed, const QString& name);
    void typeAgain(const std::shared_ptr<PBImageFileItem>& item, const QString& typed);

    const Parts _parts;
    /// Expires with this object.
    const std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
};
