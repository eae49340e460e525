#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>

namespace platform {

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
