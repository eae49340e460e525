#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QHash>
#include <QObject>
#include <QString>

class QDBusMessage;

namespace platform {

/// The colour profiles of screens, as the system's colour daemon tells them by the names of their
/// outputs. Nothing here waits for it. Main thread.
class ScreenProfiles final : public QObject {
    Q_OBJECT

public:
    /// The bus that the colour daemon is on.
    explicit ScreenProfiles(const QDBusConnection& bus, QObject* parent = nullptr);
    /// The system's bus; one that is not connected where there is none.
    [[nodiscard]] static QDBusConnection systemBus();

    /// An ICC profile, not looked into; empty where the daemon tells none, or not yet: the first
    /// question about a screen also asks it, and `profileChanged` tells when another answer has
    /// come.
    [[nodiscard]] QByteArray profileOf(const QString& screenName);

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
    QHash<QString, QByteArray> _profiles; ///< empty where it has told none
};

/// The profile of the first screen as desktops lay it on the root window of an X server; empty
/// where there is none. Main thread.
[[nodiscard]] QByteArray profileOfRootWindow();

} // namespace platform
