#include "catalogue/MetadataKeys.h"
#include "codec/Bitmaps.h"
#include "codec/PBImageImporter.h"
#include "core/FileTypes.h"
#include "platform/files/TypeIdentifiers.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTextStream>

namespace {

void printDictionary(QTextStream& out, const QString& title, const PBDictionary& dictionary) {
    if (dictionary.empty()) return;
    out << "  " << title << '\n';
    for (const auto& [key, value] : dictionary)
        out << "    " << key << " = " << value.toText() << '\n';
}

PBDictionary nested(const PBDictionary& properties, QStringView key) {
    const PBDictionary* dictionary = valueForKey(properties, key.toString()).dictionary();
    return dictionary ? *dictionary : PBDictionary();
}

void printProperties(QTextStream& out, const PBDictionary& properties) {
    PBDictionary top;
    for (const auto& [key, value] : properties) {
        if (!value.isDictionary()) top.emplace(key, value);
    }
    printDictionary(out, QStringLiteral("Image"), top);
    using namespace PBUtilities;
    printDictionary(
        out, QStringLiteral("Exif"), databaseDictFromExifPropDict(nested(properties, u"{Exif}")));
    printDictionary(
        out, QStringLiteral("ExifAux"),
        databaseDictFromExifAuxPropDict(nested(properties, u"{ExifAux}")));
    printDictionary(
        out, QStringLiteral("Tiff"), databaseDictFromTiffPropDict(nested(properties, u"{TIFF}")));
    printDictionary(
        out, QStringLiteral("IPTC"), databaseDictFromIPTCPropDict(nested(properties, u"{IPTC}")));
    printDictionary(
        out, QStringLiteral("GPS"), databaseDictFromGPSPropDict(nested(properties, u"{GPS}")));
    printDictionary(out, QStringLiteral("GIF"), nested(properties, u"{GIF}"));
}

struct Options {
    bool withTime = false;
    unsigned thumbnailSize = 0; ///< longest side in pixels; 0: none
    QString thumbnailFile;
};

/// Tells how long something took, if that was asked for.
class Stopwatch {
public:
    Stopwatch(QTextStream& out, bool isOn) : _out(out), _isOn(isOn) { _timer.start(); }
    void tell(QStringView what) {
        if (!_isOn) return;
        _out << "  " << what << " took " << static_cast<double>(_timer.nsecsElapsed()) / 1e6
             << " ms\n";
        _timer.start();
    }

private:
    QTextStream& _out;
    bool _isOn;
    QElapsedTimer _timer;
};

/// PNG where the file's name says so, else JPEG.
bool writeThumbnail(QTextStream& out, const QImage& image, const QString& path) {
    const bool isPng = PBUtilities::pathExtension(path).compare(u"png", Qt::CaseInsensitive) == 0;
    const QByteArray bytes =
        isPng ? PBUtilities::cgImageRefToPngData(image) : PBUtilities::cgImageRefToJpegData(image);
    QFile file(path);
    const bool written =
        !bytes.isEmpty() && file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    if (written) {
        out << "  Thumbnail = " << image.width() << " x " << image.height() << ", " << bytes.size()
            << " bytes\n";
    } else {
        out << "  no thumbnail\n";
    }
    return written;
}

bool describe(QTextStream& out, const QString& path, const Options& options) {
    out << path << '\n';
    if (!QFileInfo(path).isFile() || !QFileInfo(path).isReadable()) {
        out << "  is no file that can be opened\n";
        return false;
    }
    const auto importer = PBImageImporter::initWithImagePath(path);
    const QString type = PBUtilities::extentionToUTI(PBUtilities::pathExtension(path));
    out << "  Type = " << (type.isEmpty() ? QStringLiteral("unknown") : type) << ", by content "
        << importer->utiType() << '\n';
    Stopwatch stopwatch(out, options.withTime);
    const auto properties = importer->propertiesAtIndex(0, {}).ifRead();
    stopwatch.tell(u"Properties");
    out << "  Frames = " << importer->imageCount() << '\n';
    stopwatch.tell(u"Counting frames");
    if (!properties) {
        out << "  not a picture\n";
        return false;
    }
    printProperties(out, *properties);
    if (options.thumbnailSize == 0) return true;
    const QImage image = importer->createImageWithMaxSize(options.thumbnailSize, 0);
    stopwatch.tell(u"Decoding");
    const bool written = writeThumbnail(out, image, options.thumbnailFile);
    stopwatch.tell(u"Encoding");
    return written;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Prints what the catalogue would hold of picture files."));
    parser.addHelpOption();
    const QCommandLineOption time(QStringLiteral("time"), QStringLiteral("Say how long it took."));
    const QCommandLineOption thumbnail(
        QStringLiteral("thumbnail"),
        QStringLiteral("Write a thumbnail of N pixels of the one FILE to OUT (JPEG, or PNG by its "
                       "name): --thumbnail N OUT FILE."),
        QStringLiteral("N"));
    parser.addOptions({time, thumbnail});
    parser.addPositionalArgument(QStringLiteral("FILE…"), QStringLiteral("Picture files."));
    parser.process(application);
    QStringList files = parser.positionalArguments();
    Options options;
    options.withTime = parser.isSet(time);
    if (parser.isSet(thumbnail)) {
        options.thumbnailSize = parser.value(thumbnail).toUInt();
        if (options.thumbnailSize == 0 || files.size() != 2) parser.showHelp(2);
        options.thumbnailFile = files.takeFirst();
    }
    if (files.isEmpty()) parser.showHelp(2);
    QTextStream out(stdout);
    bool allRead = true;
    for (const QString& path : files)
        allRead = describe(out, path, options) && allRead;
    return allRead ? 0 : 1;
}
