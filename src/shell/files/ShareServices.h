#pragma once

#include "platform/desktop/DesktopPrograms.h"
#include "platform/desktop/Wallpaper.h"
#include "platform/tasks/OperationQueue.h"

#include <QHash>
#include <QIcon>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

/// Something that takes files from the program.
struct ShareService {
    QString title;
    QIcon image;
    /// Hands the files over; calls back with whether somebody took them. Main thread.
    std::function<void(const QStringList& paths, std::function<void(bool isTaken)> done)>
        performWithItems;
    /// A program of the desktop, which can also open the originals.
    bool isProgram = false;
};

/// What the desktop has for photographs. Desktop files, disks and the bus are asked on a thread of
/// its own. Main thread.
class ShareServices final {
public:
    /// Has a look ahead, for what most photographs are.
    ShareServices();
    /// Waits for what is being asked; nobody is called back any more.
    ~ShareServices();
    ShareServices(const ShareServices&) = delete;
    ShareServices& operator=(const ShareServices&) = delete;

    using Found = std::function<void(const std::vector<ShareService>& services)>;
    /// What takes files of all these types. What was found the last time is told at once, and what
    /// is found now unless it is the same. The services live as long as this object.
    void find(const QStringList& mimeTypes, const Found& found);

    /// The picture of the desktop.
    void
    setDesktopImage(const QString& path, std::function<void(platform::Wallpaper::Result)> answered);

private:
    /// What is there for some types.
    struct There {
        std::vector<platform::DesktopPrograms::Program> programs;
        bool hasMail = false;
        std::vector<std::pair<std::size_t, QString>> senders; ///< which of the known, and where
        bool operator==(const There&) const = default;
    };
    [[nodiscard]] static There look(const QStringList& mimeTypes);
    [[nodiscard]] std::vector<ShareService> services(const There& there);
    /// `then` gets on the main thread what `work` answered elsewhere, while this object lives.
    template <typename Work, typename Then>
    void inBackground(Work work, Then then);

    QHash<QString, There> _known; ///< by the types
    /// Expires with this object; looked at on the main thread only.
    std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
    platform::OperationQueue _queue{QStringLiteral("programs")};
};
