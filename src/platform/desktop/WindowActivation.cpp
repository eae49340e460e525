#include "platform/desktop/WindowActivation.h"

#include "platform/tasks/MainThread.h"

#include <QGuiApplication>
#include <QWindow>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <xcb/xcb.h>

namespace platform {

namespace {

constexpr qsizetype longestId = 4096; // bytes: anybody on the bus may send one

class Server {
public:
    explicit Server(xcb_connection_t* connection)
        : _connection(connection),
          _root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root) {}

    [[nodiscard]] xcb_atom_t atom(std::string_view name) const {
        const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
            xcb_intern_atom_reply(
                _connection,
                xcb_intern_atom(
                    _connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
                nullptr),
            &std::free);
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }

    void setCardinal(xcb_window_t window, std::string_view name, quint32 value) const {
        xcb_change_property(
            _connection, XCB_PROP_MODE_REPLACE, window, atom(name), XCB_ATOM_CARDINAL, 32, 1,
            &value);
    }

    /// To the window manager, of the window.
    void tell(xcb_window_t window, std::string_view name, quint32 first, quint32 second) const {
        xcb_client_message_event_t event = message(window, 32, atom(name));
        event.data.data32[0] = first;
        event.data.data32[1] = second;
        send(event, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
    }

    /// To whoever shows that programs start: a text with its closing zero in pieces of 20 bytes.
    void tellStartup(xcb_window_t window, const QByteArray& text) const {
        const xcb_atom_t next = atom("_NET_STARTUP_INFO");
        xcb_client_message_event_t event = message(window, 8, atom("_NET_STARTUP_INFO_BEGIN"));
        for (qsizetype sent = 0; sent <= text.size(); sent += sizeof event.data.data8) {
            const QByteArray piece = text.sliced(sent).first(
                std::min<qsizetype>(sizeof event.data.data8, text.size() - sent));
            std::ranges::fill(event.data.data8, 0);
            std::ranges::copy(piece, std::begin(event.data.data8));
            send(event, XCB_EVENT_MASK_PROPERTY_CHANGE);
            event.type = next;
        }
    }

    void flush() const { xcb_flush(_connection); }

private:
    static xcb_client_message_event_t message(xcb_window_t window, quint8 format, xcb_atom_t type) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = format;
        event.window = window;
        event.type = type;
        return event;
    }
    void send(const xcb_client_message_event_t& event, quint32 mask) const {
        xcb_send_event(_connection, 0, _root, mask, reinterpret_cast<const char*>(&event));
    }

    xcb_connection_t* _connection;
    xcb_window_t _root;
};

QByteArray quoted(QByteArray text) {
    return '"' + text.replace('\\', "\\\\").replace('"', "\\\"") + '"';
}

} // namespace

Activation activationOfStart() {
    return {qgetenv("DESKTOP_STARTUP_ID"), qgetenv("XDG_ACTIVATION_TOKEN")};
}

quint32 timeOfStartupId(const QByteArray& startupId) {
    const qsizetype place = startupId.lastIndexOf("_TIME");
    return place < 0 ? 0 : startupId.sliced(place + 5).toUInt();
}

void bringToFront(QWindow& window, const Activation& activation) {
    assertMainThread();
    // The toolkit takes the next token from there.
    if (!activation.token.isEmpty() && activation.token.size() <= longestId)
        qputenv("XDG_ACTIVATION_TOKEN", activation.token);
    window.raise();
    window.requestActivate();
    forgetActivation();
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    const QByteArray& id = activation.startupId;
    if (!x11 || !x11->connection() || id.isEmpty() || id.size() > longestId) return;
    const Server server(x11->connection());
    const auto number = static_cast<xcb_window_t>(window.winId());
    if (const quint32 time = timeOfStartupId(id)) {
        constexpr quint32 application = 1; // who asks
        server.setCardinal(number, "_NET_WM_USER_TIME", time);
        server.tell(number, "_NET_ACTIVE_WINDOW", application, time);
    }
    server.tellStartup(number, "remove: ID=" + quoted(id));
    server.flush();
}

void forgetActivation() {
    assertMainThread();
    for (const char* variable : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"})
        if (qEnvironmentVariableIsSet(variable)) qunsetenv(variable);
}

} // namespace platform
