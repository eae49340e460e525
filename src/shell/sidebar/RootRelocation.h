#pragma once

#include "library/PBAliasObject.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

class FolderPrompts;
class PBAliasManager;
class PBAliasResolver;

/// Gives a root that is away a folder again: one that the user chooses for it, or one that is added
/// and turns out to be its own. Main thread.
class RootRelocation final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        PBAliasManager& aliasManager;
        PBAliasResolver& aliasResolver;
        FolderPrompts& prompts;
        /// The root is there again, and is what the user wants to see.
        std::function<void(const std::shared_ptr<PBAliasObject>& aliasObject)> located;
    };

    /// The parts outlive this object.
    RootRelocation(Parts parts, QObject* parent);
    ~RootRelocation() override;

    /// Lets the user choose the folder of a root that is away. A folder that doesn't look like it
    /// is taken only when the user says so, one that is in the sidebar already not at all.
    void locateFolder(const std::shared_ptr<PBAliasObject>& aliasObject);

    /// If the folder is that of a root that is away, that root gets it: true. By what the file
    /// system says of it, or, where the root was last, by its photographs.
    [[nodiscard]] bool takeIfAway(const QString& path);

private:
    using Candidate = std::pair<std::shared_ptr<PBAliasObject>, PBAliasBookmark>;

    [[nodiscard]] QString startFolder(const PBAliasObject& aliasObject) const;
    void take(const std::shared_ptr<PBAliasObject>& aliasObject, const QString& path);
    [[nodiscard]] std::optional<Candidate> awayRootOf(const QString& path) const;
    [[nodiscard]] bool settle(const Candidate& candidate, const QString& path);

    const Parts _parts;
};
