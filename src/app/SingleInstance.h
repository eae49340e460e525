#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class QLocalServer;
class QLocalSocket;

/// Sees to it that one catalogue is opened by one process. The first to come holds a lock of the
/// kernel's on a file in the catalogue's folder, which goes with the process however it ends, and
/// listens on a socket for what later ones hand over. Main thread.
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
        bool wantsState = false; ///< asks what the first shows; everything else is ignored
    };

    explicit SingleInstance(QObject* parent = nullptr);
    ~SingleInstance() override;

    /// Takes the folder, or hands the request to whoever holds it; waits for its answer for five
    /// seconds at most. A folder in which no lock can be made counts as taken by this process.
    [[nodiscard]] Outcome take(const QString& folder, const Request& request);

    /// What answers those who ask for the state.
    void setStateSource(std::function<QByteArray()> stateSource) {
        _stateSource = std::move(stateSource);
    }
    /// Asks the program that has the folder what it shows; nothing if none has, or none answers
    /// within five seconds. Any thread.
    [[nodiscard]] static std::optional<QByteArray> stateOf(const QString& folder);

Q_SIGNALS:
    void requested(const SingleInstance::Request& request);

private:
    [[nodiscard]] bool lock(const QString& folder);
    [[nodiscard]] static bool handOver(const QString& socket, const Request& request);
    void listen(const QString& socket);
    void accept();
    void answer(QLocalSocket& socket, const Request& request);

    int _lock = -1;
    std::unique_ptr<QLocalServer> _server;
    std::function<QByteArray()> _stateSource;
};
