/// A decoder process for tests: instead of pictures it takes files of orders, such as "paint 40
/// 30".

#include "codec/process/DecoderProcess.h"
#include "codec/process/PacketSocket.h"
#include "codec/process/Protocol.h"

#include <QByteArray>
#include <QByteArrayList>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// A picture in which every pixel tells its place.
QImage paint(const codec::DecodeRequest& request, QSize size, bool inSharedMemory) {
    QImage image = inSharedMemory ? request.allocate(size, QImage::Format_RGB32)
                                  : QImage(size, QImage::Format_ARGB32_Premultiplied);
    const auto profile = static_cast<int>(request.targetProfile.size() % 256);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x % 256, y % 256, profile));
    return image;
}

/// One bit for each thing that a confined process should not be able to do.
int escapes() {
    int escaped = 0;
    if (::open("/etc/passwd", O_RDONLY | O_CLOEXEC) >= 0) escaped |= 1;
    if (::open("/tmp/velmora-escaped", O_CREAT | O_WRONLY | O_CLOEXEC, 0600) >= 0) escaped |= 2;
    if (::socket(AF_INET, SOCK_STREAM, 0) >= 0) escaped |= 4;
    if (::fork() >= 0) escaped |= 8;
    if (::execl("/bin/true", "true", nullptr) >= 0) escaped |= 16;
    if (::kill(::getppid(), 0) == 0) escaped |= 32;
    if (::rename("/tmp/a", "/tmp/b") == 0 || errno == ENOENT) escaped |= 64;
    rlimit limit{};
    for (const auto kind : {RLIMIT_CORE, RLIMIT_FSIZE})
        if (::getrlimit(kind, &limit) != 0 || limit.rlim_max != 0) escaped |= 128;
    if (::setrlimit(RLIMIT_NOFILE, &limit) == 0) escaped |= 256;
    for (const int rights : {PROT_READ | PROT_EXEC, PROT_READ | PROT_WRITE | PROT_EXEC})
        if (::mmap(nullptr, 1, rights, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED)
            escaped |= 512;
    return escaped;
}

class OrderDecoder final : public codec::Decoder {
public:
    explicit OrderDecoder(QByteArrayList words) : _words(std::move(words)) {}

    std::size_t frameCount() override {
        return static_cast<std::size_t>(number(isAnimation() ? 1 : 3, 1));
    }
    bool isAnimation() override {
        if (_words.value(0) == "crash-open") std::abort();
        return _words.value(0) == "film";
    }
    int frameDelay(std::size_t index) override { return static_cast<int>(index) * 10; }

    codec::Frame frame(const codec::DecodeRequest& request) override {
        const QByteArray order = _words.value(0);
        const QSize size(number(1, 8), number(2, 8));
        if (order == "paint") return {paint(request, size, true)};
        if (order == "heap") return {paint(request, size, false), false};
        if (order == "crash") std::abort();
        if (order == "film" || order == "number") return filmFrame(request);
        if (order == "wishes") return wishes(request);
        if (order == "spin") {
            // For so many milliseconds of the processor, which others may use meanwhile, or without
            // end. A yield would leave it to others wherever there are some.
            const std::clock_t end = std::clock() + number(1, 0) * (CLOCKS_PER_SEC / 1000);
            while (std::clock() < end || _words.size() == 1) {
            }
            return {paint(request, {8, 8}, true)};
        }
        if (order == "wait") {
            while (!request.stop.isSet())
                std::this_thread::yield();
            return {};
        }
        if (order == "sleep" || order == "doze") {
            // As for a disk that does not answer. The second has computed before: enough to pass
            // for one at work, and too little for its picture to be to blame.
            const std::clock_t end = std::clock() + (order == "doze" ? CLOCKS_PER_SEC / 16 : 0);
            while (std::clock() < end) {
            }
            const std::atomic<int> never = 0;
            never.wait(0);
        }
        if (order == "greet") {
            const codec::process::Reply greeting{.status = codec::process::Status::Done};
            // Not for ever: whoever takes each for the first one would never end the test.
            const std::clock_t end = std::clock() + 10 * CLOCKS_PER_SEC;
            while (std::clock() < end &&
                   codec::process::sendPacket(
                       codec::process::socketDescriptor, std::as_bytes(std::span(&greeting, 1)))) {
            }
        }
        if (order == "memory") {
            for (std::vector<std::vector<char>> hoard;;)
                hoard.emplace_back(std::size_t{64} << 20, 'x');
        }
        if (order == "lie") { // claims more than was made room for
            const QImage given = request.allocate({1, 1}, QImage::Format_RGB32);
            return {QImage(given.constBits(), size.width(), size.height(), given.format())};
        }
        if (order == "escape") return {paint(request, QSize(1 + escapes(), 1), true)};
        if (order == "threads") {
            std::atomic<int> ran = 0;
            { // As decoders do that share the work among threads of their own.
                const std::jthread one([&] { ++ran; });
                const std::jthread other([&] { ++ran; });
            }
            return {paint(request, QSize(ran, 1), true)};
        }
        return {};
    }

private:
    int number(int index, int otherwise) const {
        return index < _words.size() ? _words[index].toInt() : otherwise;
    }
    /// "film COUNT PLACE HOW": a frame of its number, but for the one that is damaged.
    codec::Frame filmFrame(const codec::DecodeRequest& request) const {
        const auto index = static_cast<int>(request.frame);
        const bool isPlace = _words.size() > 3 && index == number(2, 0);
        const QByteArray how = isPlace ? _words[3] : QByteArray();
        if (how == "crash") std::abort();
        if (how == "damage") return {};
        QImage image = request.allocate({3, 2}, QImage::Format_RGB32);
        image.fill(qRgb(0, 0, index));
        return {image, how != "cut"};
    }
    /// What the request says, told by the size.
    static codec::Frame wishes(const codec::DecodeRequest& request) {
        const bool isDeep = request.depth == codec::Depth::Source;
        const bool isFiltered = request.reduction == codec::Reduction::Filtered;
        QImage image = request.allocate(
            {request.threads + (isFiltered ? 100 : 0), isDeep ? 2 : 1},
            isDeep ? QImage::Format_RGBX64 : QImage::Format_RGB32);
        image.fill(QColor::fromRgba64(0x1234, 0x5678, 0x9ABC));
        return {image, true, isDeep ? QByteArray("its own") : request.targetProfile};
    }

    QByteArrayList _words;
};

const codec::Codec orders[] = {
    {[](std::span<const std::uint8_t>, QStringView) -> QStringView { return u"test.orders"; },
     [](const codec::Source& source) -> std::unique_ptr<codec::Decoder> {
         const auto bytes = source.bytes();
         const QByteArray text(
             reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size()));
         // The header of a picture, which declares a size, may stand before the order.
         return std::make_unique<OrderDecoder>(
             text.mid(text.lastIndexOf('\n') + 1).trimmed().split(' '));
     }}};

} // namespace

int main(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    return codec::process::runIfDecoderProcess(arguments, orders).value_or(2);
}
