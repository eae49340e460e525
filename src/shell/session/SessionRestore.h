#pragma once

#include "shell/session/SessionState.h"

#include <QObject>

#include <optional>

class BrowserPane;
class LargeView;
class SourceTreeController;
struct PBImageBrowserIndex;
struct ShellServices;

/// Brings back what a former run showed, as its photographs come: selection, current photograph and
/// place of the sheet, and the large view. It waits for the folder to be selected, and gives up
/// when the user does something else. Main thread.
class SessionRestore final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        const ShellServices& services;
        BrowserPane& browserPane;
        SourceTreeController& tree;
        LargeView& largeView;
    };

    /// The parts outlive this object.
    SessionRestore(const Parts& parts, QObject* parent);

    void begin(SessionState state);
    /// Something else is wanted, or everything is there.
    void end();
    /// What has not come yet.
    [[nodiscard]] const std::optional<SessionState>& pending() const { return _state; }
    /// The scan began or ended.
    void scanStateDidChange();

Q_SIGNALS:
    void didEnd();

private:
    [[nodiscard]] bool isFolderSelected() const;
    void folderDidChange();
    /// The present id; 0 where the photograph is in the catalogue no more.
    [[nodiscard]] qint64 presentId(const SessionState::Photograph& photograph);
    [[nodiscard]] qint64 idOfPath(const QString& path) const;
    void bringBack();
    /// Enters the large view once its photographs are there, or at the latest when all that come
    /// have come.
    void look(bool isLast);
    [[nodiscard]] PBImageBrowserIndex indexOfCurrent() const;

    const Parts _parts;
    std::optional<SessionState> _state;
    bool _isFolderFound = false;
    bool _isIncomplete = false;    ///< the catalogue had not all of them
    bool _isSameCatalogue = false; ///< its ids are those of the former run
    qint64 _currentId = 0;
    qint64 _selectCount = 0;
};
