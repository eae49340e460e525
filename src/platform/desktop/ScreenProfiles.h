#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QHash>
#include <QObject>
#include <QString>

class QDBusMessage;
class QScreen;

namespace platform {

/// The colour profiles of screens, as the desktop tells them: the service of the system's colour
/// daemon, by the name of the screen's output, else what lies on the root window of an X server for
/// the first screen. Nothing here waits for the service. Main thread.
class ScreenProfiles final : public QObject {
    Q_OBJECT

public:
    /// The bus that the colour daemon is on.
    explicit ScreenProfiles(const QDBusConnection& bus, QObject* parent = nullptr);
    /// The system's bus, where there is one; else only X servers are asked.
    [[nodiscard]] static QDBusConnection systemBus();

    /// An ICC profile, not looked into; empty where nothing tells one, or does not yet: the first
    /// question about a screen also begins to ask the service, and `profileChanged` tells when
    /// another answer has come.
    [[nodiscard]] QByteArray profileOf(const QScreen& screen);

Q_SIGNALS:
    void profileChanged(const QString& screenName);

private Q_SLOTS:
    void devicesChanged();

private:
    using Answer = std::function<void(const QDBusMessage& answer)>;
    void ask(const QString& screenName);
    void askForProperty(
        const QString& object, const QString& interface, const QString& name, Answer answer);
    void call(const QDBusMessage& question, Answer answer);
    void setProfile(const QString& screenName, const QByteArray& profile);

    QDBusConnection _bus;
    QHash<QString, QByteArray> _profiles; ///< of the service; empty where it has told none
};

/// What the desktop laid on the root window of the X server that the program shows on; empty
/// without one.
[[nodiscard]] QByteArray profileOfRootWindow();

} // namespace platform
