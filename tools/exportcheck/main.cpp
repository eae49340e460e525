// exportcheck FOLDER [SIDE [TO]]: exports each picture below a folder as every type that can be
// written, at most SIDE pixels long, and compares what is read back with the source: its pixels,
// and its metadata key by key. Prints what differs and, at the end, how many files of each type
// were made. With TO, the files stay there for other programs to open.

#include "codec/PBImageImporterManager.h"
#include "codec/encoding/PictureEncoder.h"
#include "codec/process/DecoderPool.h"
#include "codec/process/DecoderProcess.h"
#include "fileactions/export/PictureExport.h"
#include "platform/files/TypeIdentifiers.h"

#include <QCommandLineParser>
#include <QDirIterator>
#include <QGuiApplication>
#include <QMap>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <cstdio>
#include <span>

namespace {

constexpr int usualSide = 1024;
/// Of the mean over blocks, between 0 and 255.
constexpr int allowedDifference = 8;

QTextStream& out() {
    static QTextStream stream(stdout);
    return stream;
}

/// The largest difference between the means of blocks of 8 x 8 pixels; 255 for other sizes.
int difference(const QImage& one, const QImage& other) {
    if (one.size() != other.size() || one.isNull()) return 255;
    const QSize blocks = (one.size() / 8).expandedTo(QSize(1, 1));
    const auto means = [&blocks](const QImage& image) {
        return image.scaled(blocks, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
            .convertToFormat(QImage::Format_RGB32);
    };
    const QImage a = means(one);
    const QImage b = means(other);
    int largest = 0;
    for (int y = 0; y < blocks.height(); ++y) {
        for (int x = 0; x < blocks.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            largest = std::max(
                {largest, std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                 std::abs(qBlue(p) - qBlue(q))});
        }
    }
    return largest;
}

/// What says how the former file was stored, or is said anew for upright pixels of a new size.
bool isOfTheFile(const QString& key) {
    static const QStringList keys{
        QStringLiteral("Orientation"), QStringLiteral("PixelXDimension"),
        QStringLiteral("PixelYDimension"), QStringLiteral("ColorSpace"),
        QStringLiteral("Compression"), QStringLiteral("PhotometricInterpretation"),
        QStringLiteral("XResolution"), QStringLiteral("YResolution"),
        QStringLiteral("ResolutionUnit"), QStringLiteral("ComponentsConfiguration"),
        QStringLiteral("TileWidth"), QStringLiteral("TileLength"), QStringLiteral("WhitePoint"),
        QStringLiteral("PrimaryChromaticities"), QStringLiteral("TransferFunction"),
        // Times of IPTC are told in XMP, in another form, where a type has no place for IPTC.
        QStringLiteral("DateCreated"), QStringLiteral("TimeCreated"),
        QStringLiteral("DigitalCreationDate"), QStringLiteral("DigitalCreationTime")};
    return keys.contains(key);
}

QStringList missing(const PBDictionary& source, const PBDictionary& made) {
    QStringList keys;
    for (const char* group : {"{TIFF}", "{Exif}", "{ExifAux}", "{GPS}", "{IPTC}"}) {
        const PBValue& former = valueForKey(source, QLatin1StringView(group));
        const PBValue& now = valueForKey(made, QLatin1StringView(group));
        if (!former.dictionary()) continue;
        for (const auto& [key, value] : *former.dictionary()) {
            if (isOfTheFile(key)) continue;
            const PBValue* kept = now.dictionary() ? &valueForKey(*now.dictionary(), key) : nullptr;
            if (!kept || kept->toText() != value.toText()) {
                keys +=
                    QStringLiteral("%1 %2: %3, not %4")
                        .arg(
                            QLatin1StringView(group), key,
                            kept ? kept->toText().left(40) : QString(), value.toText().left(40));
            }
        }
    }
    return keys;
}

struct Counts {
    int made = 0;
    int failed = 0;
    int otherPixels = 0;
    int otherMetadata = 0;
};

} // namespace

int main(int argumentCount, char** arguments) {
    const auto asDecoder = codec::process::runIfDecoderProcess(
        std::span(arguments, static_cast<std::size_t>(argumentCount)));
    if (asDecoder) return *asDecoder;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argumentCount, arguments);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Exports pictures as all types, and compares them with their sources."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("The pictures."));
    parser.addPositionalArgument(
        QStringLiteral("SIDE"), QStringLiteral("The longer one in pixels; 1024 without it."),
        QStringLiteral("[SIDE"));
    parser.addPositionalArgument(
        QStringLiteral("TO"), QStringLiteral("A folder that keeps what was made."),
        QStringLiteral("[TO]]"));
    parser.process(application);
    const QStringList words = parser.positionalArguments();
    bool isSide = true;
    const int side = words.size() > 1 ? words[1].toInt(&isSide) : usualSide;
    if (words.isEmpty() || words.size() > 3 || !isSide || side < 1) parser.showHelp(2);
    const QTemporaryDir temporary;
    const QDir to(words.value(2, temporary.path()));
    for (const QString& folder : {words[0], to.path()}) {
        if (QFileInfo(folder).isDir()) continue;
        std::fprintf(stderr, "exportcheck: %s is no folder\n", qPrintable(folder));
        return 1;
    }
    codec::setFrameReader(std::make_shared<codec::DecoderPool>(codec::DecoderPool::Settings{}));
    PBImageImporterManager importers;
    QMap<QString, Counts> counts;
    int number = 0;
    QDirIterator files(words[0], QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        const auto importer = importers.imageImporterForImageURL(path);
        if (!importer) continue;
        const QImage shown = importer->createImageWithMaxSize(side, 0);
        const auto [status, properties] = importer->propertiesAtIndex(0, {});
        if (shown.isNull()) continue;
        ++number;
        for (const QString& type : codec::writableTypes()) {
            Counts& count = counts[type];
            const auto made = fileactions::exportPicture(
                importers, path, 0, {.type = type, .quality = 0.95, .maxSize = side}, {});
            const QString name = to.filePath(QStringLiteral("%1.%2").arg(number).arg(
                platform::TypeIdentifiers::preferredExtension(type)));
            QFile file(name);
            if (made.error || !file.open(QIODevice::WriteOnly) ||
                file.write(made.content) != made.content.size()) {
                ++count.failed;
                out() << path << ' ' << type << ": " << QString::fromStdString(made.error.message())
                      << '\n';
                continue;
            }
            file.close();
            ++count.made;
            const auto reader = importers.imageImporterForImageURL(name);
            const int off = difference(shown, reader->createImageWithMaxSize(0, 0));
            if (off > allowedDifference) {
                ++count.otherPixels;
                out() << path << ' ' << type << ": pixels differ by " << off << '\n';
            }
            const QStringList keys =
                missing(properties, reader->propertiesAtIndex(0, {}).properties);
            if (!keys.isEmpty() || made.isMetadataMissing) {
                ++count.otherMetadata;
                out() << path << ' ' << type << (made.isMetadataMissing ? " (told)" : "") << ": "
                      << keys.join(QStringLiteral(", ")) << '\n';
            }
        }
        out().flush();
    }
    for (auto each = counts.cbegin(); each != counts.cend(); ++each) {
        out() << each.key() << ": " << each->made << " made, " << each->failed << " failed, "
              << each->otherPixels << " with other pixels, " << each->otherMetadata
              << " with other metadata\n";
    }
    codec::setFrameReader(nullptr);
    return 0;
}
