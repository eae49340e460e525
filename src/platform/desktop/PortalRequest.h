#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <optional>

namespace platform {

/// Files as a portal takes them, which may not see where they lie. More than one message can carry
/// are none at all; nothing where one can't be read. Any thread; blocks.
using PortalFiles = QList<QDBusUnixFileDescriptor>;
[[nodiscard]] std::optional<PortalFiles> openForPortal(const QStringList& paths);

/// One request to the desktop's portal, with what becomes of it. Deletes itself after the answer.
/// Main thread.
class PortalRequest final : public QObject {
    Q_OBJECT

public:
    enum class Answer {
        Done,
        Cancelled, ///< by the user
        Failed,
        Nobody, ///< there is no portal, or it can't do that
    };

    /// `method` of the portal's `interface` gets the arguments and then the options. Where a portal
    /// has taken the request, the user may take any time for the answer.
    static void call(
        const QDBusConnection& bus, const QString& interface, const QString& method,
        const QVariantList& arguments, QVariantMap options, std::function<void(Answer)> answered);

private Q_SLOTS:
    void response(uint code, const QVariantMap& results);

private:
    PortalRequest(const QDBusConnection& bus, std::function<void(Answer)> answered)
        : _bus(bus), _answered(std::move(answered)) {}
    void end(Answer answer);
    bool listen(const QString& path);

    QDBusConnection _bus;
    std::function<void(Answer)> _answered;
    QString _path;
};

} // namespace platform
