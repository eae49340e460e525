// The large view as the user sees it, measured from outside of the program: from a key that goes to
// the X server to the first pixels that change on the screen, and to the picture that stays; and
// from the start of the process with a photograph to that photograph, beside other viewers where
// they are installed. Says nothing without an X server; a quiet one of its own is best (Xvfb
// -screen 0 1920x1200x24).

#include "scan/PictureSets.h"
#include "support/Ratio.h"

#include <QByteArray>
#include <QColor>
#include <QCoreApplication>
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <thread>

#include <xcb/xcb.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t keysymRight = 0xFF53;
constexpr std::uint32_t keysymLeft = 0xFF51;
/// What is looked at: in the middle of the picture, and small, so that looking takes no time.
constexpr std::uint16_t watchedSide = 96;
/// A picture that has not changed for so long stays.
constexpr std::chrono::milliseconds stillFor{400};
constexpr std::chrono::seconds patience{60};

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// A connection of its own to the X server, which sees what everybody sees.
class Screen {
public:
    Screen() : _connection(xcb_connect(nullptr, nullptr)) {}
    ~Screen() { xcb_disconnect(_connection); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    [[nodiscard]] bool isOpen() const { return xcb_connection_has_error(_connection) == 0; }

    /// The window of that process that is on show, above a size; 0 while there is none.
    [[nodiscard]] xcb_window_t windowOf(qint64 process) const {
        return find(xcb_setup_roots_iterator(xcb_get_setup(_connection)).data->root, process);
    }

    void press(xcb_window_t window, std::uint32_t keysym) const {
        xcb_key_press_event_t event{};
        event.detail = codeOf(keysym);
        event.root = xcb_setup_roots_iterator(xcb_get_setup(_connection)).data->root;
        event.event = window;
        event.same_screen = 1;
        for (const int type : {XCB_KEY_PRESS, XCB_KEY_RELEASE}) {
            event.response_type = static_cast<std::uint8_t>(type);
            xcb_send_event(
                _connection, 1, window, XCB_EVENT_MASK_KEY_PRESS,
                reinterpret_cast<const char*>(&event));
        }
        xcb_flush(_connection);
    }

    /// The pixels in the middle of the window.
    [[nodiscard]] QByteArray pixels(xcb_window_t window) const {
        const Owned<xcb_get_geometry_reply_t> geometry(
            xcb_get_geometry_reply(_connection, xcb_get_geometry(_connection, window), nullptr));
        if (!geometry) return {};
        const auto left = static_cast<std::int16_t>((geometry->width - watchedSide) / 2);
        const auto top = static_cast<std::int16_t>((geometry->height - watchedSide) / 2);
        const Owned<xcb_get_image_reply_t> image(xcb_get_image_reply(
            _connection,
            xcb_get_image(
                _connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, left, top, watchedSide, watchedSide,
                ~0U),
            nullptr));
        if (!image) return {};
        return {
            reinterpret_cast<const char*>(xcb_get_image_data(image.get())),
            xcb_get_image_data_length(image.get())};
    }

private:
    [[nodiscard]] xcb_window_t find(xcb_window_t window, qint64 process) const {
        if (belongsTo(window, process)) return window;
        const Owned<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(_connection, xcb_query_tree(_connection, window), nullptr));
        if (!tree) return 0;
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        for (int index = 0; index < xcb_query_tree_children_length(tree.get()); ++index)
            if (const xcb_window_t found = find(children[index], process)) return found;
        return 0;
    }

    [[nodiscard]] bool belongsTo(xcb_window_t window, qint64 process) const {
        constexpr std::string_view name = "_NET_WM_PID";
        const Owned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
            _connection,
            xcb_intern_atom(_connection, 1, static_cast<std::uint16_t>(name.size()), name.data()),
            nullptr));
        const Owned<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
            _connection, xcb_get_window_attributes(_connection, window), nullptr));
        if (!atom || !attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE) return false;
        const Owned<xcb_get_property_reply_t> property(xcb_get_property_reply(
            _connection,
            xcb_get_property(_connection, 0, window, atom->atom, XCB_ATOM_CARDINAL, 0, 1),
            nullptr));
        std::uint32_t owner = 0;
        if (!property || xcb_get_property_value_length(property.get()) != int{sizeof(owner)})
            return false;
        std::memcpy(&owner, xcb_get_property_value(property.get()), sizeof(owner));
        return owner == process;
    }

    [[nodiscard]] xcb_keycode_t codeOf(std::uint32_t keysym) const {
        const xcb_setup_t* setup = xcb_get_setup(_connection);
        const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
        const Owned<xcb_get_keyboard_mapping_reply_t> mapping(xcb_get_keyboard_mapping_reply(
            _connection, xcb_get_keyboard_mapping(_connection, setup->min_keycode, count),
            nullptr));
        if (!mapping) return 0;
        const xcb_keysym_t* known = xcb_get_keyboard_mapping_keysyms(mapping.get());
        for (int code = 0; code < count; ++code)
            if (known[code * mapping->keysyms_per_keycode] == keysym)
                return static_cast<xcb_keycode_t>(setup->min_keycode + code);
        return 0;
    }

    xcb_connection_t* _connection;
};

/// What the user sees of one step.
struct Step {
    double first = 0; ///< milliseconds from the key to the first pixels that change
    double still = 0; ///< and to the last
};

Step watchStep(const Screen& screen, xcb_window_t window, std::uint32_t keysym) {
    QByteArray before = screen.pixels(window);
    const auto start = Clock::now();
    screen.press(window, keysym);
    Step step;
    auto last = start;
    while (Clock::now() - last < (step.first > 0 ? stillFor : patience)) {
        QByteArray now = screen.pixels(window);
        if (now == before) continue;
        before = std::move(now);
        last = Clock::now();
        step.still = millisecondsSince(start);
        if (step.first == 0) step.first = step.still;
    }
    return step;
}

double middle(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

void measure(const Screen& screen, QProcess& program, const QString& name, int steps) {
    xcb_window_t window = 0;
    const auto end = Clock::now() + patience;
    while (window == 0 && Clock::now() < end) {
        window = screen.windowOf(program.processId());
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    if (window == 0) std::abort();
    // The first photograph has come to rest.
    QByteArray before;
    for (auto last = Clock::now(); Clock::now() - last < std::chrono::seconds(3);) {
        QByteArray now = screen.pixels(window);
        if (now != before) last = Clock::now();
        before = std::move(now);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    std::vector<double> first;
    std::vector<double> still;
    for (int index = 0; index < steps; ++index) {
        const Step step = watchStep(screen, window, index % 8 < 4 ? keysymRight : keysymLeft);
        first.push_back(step.first);
        still.push_back(step.still);
    }
    const std::string title = name.toStdString();
    bench::printFigure((title + ": key to the first pixels, median").c_str(), middle(first), "ms");
    bench::printFigure((title + ": key to a still picture, median").c_str(), middle(still), "ms");
    bench::printFigure(
        (title + ": key to a still picture, worst").c_str(), *std::ranges::max_element(still),
        "ms");
}

/// Photographs of one size, each of another colour everywhere, so that each step can be seen.
void paint(const QString& folder, QSize size) {
    constexpr int count = 12;
    for (int number = 0; number < count; ++number) {
        QImage image(size, QImage::Format_RGB32);
        for (int y = 0; y < size.height(); ++y) {
            auto* pixels = reinterpret_cast<QRgb*>(image.scanLine(y));
            const QColor row =
                QColor::fromHsv(number * 360 / count, 255, 55 + 200 * y / size.height());
            for (int x = 0; x < size.width(); ++x)
                pixels[x] = row.rgb() + static_cast<QRgb>((x * 7 + y * 13) % 32);
        }
        const QString file =
            QStringLiteral("%1/%2.jpg").arg(folder).arg(number, 2, 10, QChar(u'0'));
        if (!image.save(file, "JPEG", 90)) std::abort();
    }
}

/// The program with photographs of that size in its large view.
void watchSteps(const Screen& screen, QSize size, const QString& name, int steps) {
    const QString path = QCoreApplication::applicationDirPath() + QStringLiteral("/velmora");
    const QTemporaryDir profile;
    const QTemporaryDir photographs;
    paint(photographs.path(), size);
    const QStringList common{QStringLiteral("--profile"), profile.path()};
    QStringList files = bench::filesBelow(photographs.path());
    files.sort();
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedChannels);
    program.start(
        path,
        common + QStringList{
                     QStringLiteral("--add"), photographs.path(), QStringLiteral("--until-idle")});
    if (!program.waitForFinished(-1) || program.exitCode() != 0) std::abort();
    program.start(
        path, common + QStringList{QStringLiteral("--size"), QStringLiteral("1920x1200")} + files);
    if (!program.waitForStarted()) std::abort();
    measure(screen, program, name, steps);
    program.terminate();
    program.waitForFinished();
}

/// From the start of the process to the last change in the middle of its window.
double watchStart(const Screen& screen, const QString& path, const QStringList& arguments) {
    QProcess program;
    program.setStandardErrorFile(QProcess::nullDevice());
    program.setStandardOutputFile(QProcess::nullDevice());
    const auto start = Clock::now();
    program.start(path, arguments);
    if (!program.waitForStarted()) std::abort();
    xcb_window_t window = 0;
    QByteArray before;
    double still = 0;
    // Between the window and its picture, some decode for longer than a step takes.
    constexpr std::chrono::seconds quiet{2};
    for (auto last = start; Clock::now() - last < (window == 0 ? patience : quiet);) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2)); // leave them the processor
        if (window == 0) window = screen.windowOf(program.processId());
        if (window == 0) continue;
        QByteArray now = screen.pixels(window);
        if (now.isEmpty()) window = 0; // it gave way to another
        if (now == before) continue;
        before = std::move(now);
        last = Clock::now();
        still = millisecondsSince(start);
    }
    program.terminate();
    if (!program.waitForFinished()) program.kill();
    program.waitForFinished();
    return still;
}

void printStart(const QString& name, const std::function<double()>& start) {
    constexpr int rounds = 5;
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round)
        times.push_back(start());
    bench::printFigure(
        (name + QStringLiteral(": start to a still picture")).toStdString().c_str(), middle(times),
        "ms");
}

void compareStarts(const Screen& screen) {
    const bench::PictureSet set{100, 1, bench::twelveMegapixelPicture, 90};
    const QString path = QCoreApplication::applicationDirPath() + QStringLiteral("/velmora");
    const QString file = bench::filesBelow(set.folder()).value(50);
    const QTemporaryDir profiles;
    const auto arguments = [&profiles, &file](const QString& profile) {
        return QStringList{QStringLiteral("--profile"), profiles.filePath(profile), file};
    };
    int number = 0;
    printStart(QStringLiteral("12 megapixels, cold"), [&] {
        return watchStart(screen, path, arguments(QString::number(++number)));
    });
    const QString known = QStringLiteral("known");
    QProcess::execute(
        path, {QStringLiteral("--profile"), profiles.filePath(known),
               QStringLiteral("--until-idle"), QStringLiteral("--add"), set.folder()});
    printStart(QStringLiteral("12 megapixels, warm"), [&] {
        return watchStart(screen, path, arguments(known));
    });
    for (const char* other : {"qimgv", "gwenview", "geeqie"}) {
        const QString name = QLatin1StringView(other);
        const QString viewer = QStandardPaths::findExecutable(name);
        if (!viewer.isEmpty())
            printStart(QStringLiteral("12 megapixels, ") + name, [&] {
                return watchStart(screen, viewer, {file});
            });
    }
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const int steps = argc > 1 ? std::max(1, std::atoi(argv[1])) : 24;
    const Screen screen;
    if (!qEnvironmentVariableIsSet("DISPLAY") || !screen.isOpen()) {
        std::printf("outside: there is no X server to look at\n");
        return 0;
    }
    qputenv("QT_QPA_PLATFORM", "xcb");
    watchSteps(screen, bench::twelveMegapixelPicture, QStringLiteral("12 megapixels"), steps);
    watchSteps(screen, QSize(6000, 4000), QStringLiteral("24 megapixels"), steps);
    compareStarts(screen);
    return 0;
}
