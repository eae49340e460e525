#pragma once

#include "app/OpenedPaths.h"
#include "platform/desktop/WindowActivation.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QLocalServer;
class QLocalSocket;

/// Sees to it that one catalogue is opened by one process. The first to come holds a lock of the
/// kernel's on a file in the catalogue's folder, which goes with the process however it ends, and
/// listens on a socket for what later ones hand over. What they hand over comes in by `requested`,
/// as what the desktop asks by other ways has to: there is one door. Main thread.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    enum class Outcome {
        First,      ///< this process may open the catalogue
        HandedOver, ///< another has it and took the request
        NoAnswer,   ///< another has it and does not answer
    };

    /// What a later start asks of the first.
    struct Request {
        QStringList paths;
        QStringList add;
        std::vector<UnopenedPath> faults = {}; ///< what of the paths can't be opened, for the user
        bool wantsState = false; ///< asks what the first shows; everything else is ignored
        bool wantsMarks = false; ///< asks for all marks as text; likewise
        std::optional<QByteArray> importMarks = std::nullopt; ///< text with marks; likewise
        bool isFullScreen = false;                            ///< the window is to fill the screen
        bool isSlideshow = false;             ///< what is opened, or shown, is to be played
        platform::Activation activation = {}; ///< by which the window may come to the front
    };

    explicit SingleInstance(QObject* parent = nullptr);
    ~SingleInstance() override;

    /// Takes the folder, or hands the request to whoever holds it; waits for its answer for five
    /// seconds at most, and as long as it takes where somebody has it for a moment only. A folder
    /// in which no lock can be made counts as taken by this process.
    /// Needs no application object: a later start is quick.
    [[nodiscard]] Outcome take(const QString& folder, const Request& request);
    /// From now on the first hears of later ones, those that are waiting among them.
    void listen();

    /// What answers those who ask for the state.
    void setStateSource(std::function<QByteArray()> stateSource) {
        _stateSource = std::move(stateSource);
    }
    /// Asks the program that has the folder what it shows; nothing if none has, or none answers
    /// within five seconds. Any thread.
    [[nodiscard]] static std::optional<QByteArray> stateOf(const QString& folder);

    /// To be called once, at any time; whoever asked may have gone.
    using Answer = std::function<void(const QByteArray& said)>;
    using ExportMarks = std::function<void(const Answer& answer)>;
    using ImportMarks = std::function<void(const QByteArray& lines, const Answer& answer)>;
    /// What answers those who ask for marks or bring some.
    void setMarksSource(ExportMarks exportMarks, ImportMarks importMarks) {
        _exportMarks = std::move(exportMarks);
        _importMarks = std::move(importMarks);
    }
    /// Takes the folder without listening to later starts, which wait for the end of this run.
    /// Waits for the end of another one like it. False when a process has the folder that listens.
    [[nodiscard]] bool takeForAMoment(const QString& folder);
    /// Has the program that has the folder do what the request asks, and answers what it says;
    /// nothing if none listens, or none answers within minutes. Any thread.
    [[nodiscard]] static std::optional<QByteArray>
    ask(const QString& folder, const Request& request);

Q_SIGNALS:
    void requested(const SingleInstance::Request& request);

private:
    /// As long as somebody has it for a moment, its end is waited for.
    [[nodiscard]] bool lock(const QString& folder);
    [[nodiscard]] bool tryLock(const QString& folder);
    [[nodiscard]] bool isHeldForAMoment() const;
    [[nodiscard]] static bool handOver(const QString& socket, const Request& request);
    [[nodiscard]] static std::optional<QByteArray>
    answerTo(const QString& folder, const Request& request, int connectWait, int wait);
    void accept();
    void answer(QLocalSocket& socket, const Request& request);

    int _lock = -1;
    QString _socket; ///< of the folder that was taken
    std::unique_ptr<QLocalServer> _server;
    std::function<QByteArray()> _stateSource;
    ExportMarks _exportMarks;
    ImportMarks _importMarks;
};
