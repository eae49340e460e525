#include "platform/desktop/IdleInhibitor.h"

#include "platform/tasks/MainThread.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QObject>
#include <QVariantMap>

#include <cstdint>
#include <functional>
#include <utility>

namespace platform {

namespace {

constexpr uint inhibitIdle = 8; // a flag of the portal's
constexpr int longestWait = 5000;

const auto portal = QStringLiteral("org.freedesktop.portal.Desktop");
const auto screenSaver = QStringLiteral("org.freedesktop.ScreenSaver");
const auto screenSaverPath = QStringLiteral("/org/freedesktop/ScreenSaver");

class DesktopIdleInhibitor final : public QObject, public IdleInhibitor {
public:
    explicit DesktopIdleInhibitor(const QDBusConnection& bus) : _bus(bus) {}
    ~DesktopIdleInhibitor() override { letGo(); }

    void inhibit(const QString& reason) override {
        assertMainThread();
        if (std::exchange(_isInhibited, true)) return;
        _reason = reason;
        askPortal(++_wish);
    }
    void release() override {
        assertMainThread();
        letGo();
    }
    [[nodiscard]] bool isInhibited() const override { return _isInhibited; }

private:
    void letGo() {
        if (!std::exchange(_isInhibited, false)) return;
        ++_wish;
        if (const auto undo = std::exchange(_undo, nullptr)) undo();
    }

    /// Calls back with the answer, while this object lives.
    void call(
        const QDBusMessage& message, const std::function<void(const QDBusPendingCall&)>& answered) {
        auto* watcher = new QDBusPendingCallWatcher(_bus.asyncCall(message, longestWait), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [=] {
            watcher->deleteLater();
            answered(*watcher);
        });
    }

    void askPortal(std::uint64_t wish) {
        QDBusMessage message = QDBusMessage::createMethodCall(
            portal, QStringLiteral("/org/freedesktop/portal/desktop"),
            QStringLiteral("org.freedesktop.portal.Inhibit"), QStringLiteral("Inhibit"));
        message << QString() << inhibitIdle << QVariantMap{{QStringLiteral("reason"), _reason}};
        call(message, [this, wish](const QDBusPendingCall& answer) {
            const QDBusPendingReply<QDBusObjectPath> reply(answer);
            if (reply.isError()) {
                askScreenSaver(wish);
                return;
            }
            keep(wish, [bus = _bus, path = reply.value().path()] {
                bus.send(QDBusMessage::createMethodCall(
                    portal, path, QStringLiteral("org.freedesktop.portal.Request"),
                    QStringLiteral("Close")));
            });
        });
    }

    void askScreenSaver(std::uint64_t wish) {
        if (wish != _wish) return;
        QDBusMessage message = QDBusMessage::createMethodCall(
            screenSaver, screenSaverPath, screenSaver, QStringLiteral("Inhibit"));
        message << QCoreApplication::applicationName() << _reason;
        call(message, [this, wish](const QDBusPendingCall& answer) {
            const QDBusPendingReply<uint> reply(answer);
            if (reply.isError()) return;
            keep(wish, [bus = _bus, cookie = reply.value()] {
                QDBusMessage undo = QDBusMessage::createMethodCall(
                    screenSaver, screenSaverPath, screenSaver, QStringLiteral("UnInhibit"));
                undo << cookie;
                bus.send(undo);
            });
        });
    }

    /// An answer that comes after the wish has gone is undone at once.
    void keep(std::uint64_t wish, std::function<void()> undo) {
        if (wish == _wish) {
            _undo = std::move(undo);
        } else {
            undo();
        }
    }

    const QDBusConnection _bus;
    QString _reason;
    bool _isInhibited = false;
    std::uint64_t _wish = 0;
    std::function<void()> _undo; // of what was granted
};

} // namespace

std::unique_ptr<IdleInhibitor> makeIdleInhibitor(const QDBusConnection& bus) {
    return std::make_unique<DesktopIdleInhibitor>(bus);
}

std::unique_ptr<IdleInhibitor> makeIdleInhibitor() {
    return makeIdleInhibitor(QDBusConnection::sessionBus());
}

} // namespace platform
