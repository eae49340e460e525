#pragma once

#include "catalogue/CatalogueCheck.h"
#include "platform/tasks/Mutex.h"
#include "shell/panes/NoticeBar.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <thread>

class FMDatabase;

/// What goes wrong with the catalogue's files, told to the user: what a statement runs into at any
/// connection, and what a look through the files finds behind the window.
///
/// While the program runs, a mark lies in the catalogue's folder; a start that finds it comes after
/// an unclean end, and looks more closely. Main thread, where nothing else is said.
class CatalogueHealth final : public QObject {
public:
    struct Environment {
        QString folder; ///< that of the catalogue
        std::function<void(const Notice&)> tell;
        std::function<void(const QString& key)> withdraw;
        std::function<void()> tryAgain; ///< has the folder on show scanned again
        std::function<void()> restart;  ///< ends the program and starts it again
    };

    explicit CatalogueHealth(Environment environment);
    /// Waits for the look through the files, which ends at once.
    ~CatalogueHealth() override;

    /// Listens to a connection; before any other thread uses it.
    void observe(FMDatabase& connection);
    /// The same for one to the ledger of marks, or to both files. Any thread.
    void observeMarks(FMDatabase& connection);
    /// Begins to look through the files; once.
    void startLooking();
    /// Ends the looking. Needed before the connections close.
    void stopLooking();
    /// The files were closed in good order: takes the mark away.
    void endedWell();

    /// Some folders can't be watched; `limit` is the system's, such as "name = 8192". Any thread.
    void watchLimitReached(const QString& limit);
    /// A file of that folder is left out because its name is no text; told once in a run. Any
    /// thread.
    void fileLeftOut(const QString& folder, const QString& name);

    /// Whether the file was to be repaired at this start, and what became of it is told on standard
    /// error. Before anything opens the catalogue.
    static void repairIfWanted(const QString& file);

private:
    enum class Trouble {
        Damaged,
        ThumbnailsDamaged,
        MarksDamaged,
        Full,
        ReadOnly,
        Locked,
        Unusable
    };

    void noteFailure(const QString& file, int code, const QString& message);
    void tell(Trouble trouble, const QString& file, const QString& message);
    void look(const std::stop_token& stop, CatalogueCheck::Depth depth);
    void postToMain(std::function<void()> function);
    [[nodiscard]] QString markFile() const;

    const Environment _environment;
    bool _endedUncleanly = false;
    std::atomic<bool> _isLeftOutTold = false;
    /// Calls that arrive after this object went are dropped.
    const std::shared_ptr<bool> _isAlive = std::make_shared<bool>(true);
    platform::Mutex _mutex;
    /// Troubles on their way to the user: a failure that comes a thousand times is told once.
    std::map<std::pair<QString, int>, bool> _told VELMORA_GUARDED_BY(_mutex);
    std::jthread _looking;
};
