#include "formatpictures/FormatPictures.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QSaveFile>

#include <cstdio>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Writes one small picture in each format, depth and arrangement that is read."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("Where they go."));
    parser.process(application);
    if (parser.positionalArguments().size() != 1) parser.showHelp(2);
    const QDir folder(parser.positionalArguments().constFirst());
    bool isWhole = QDir().mkpath(folder.path());
    for (const QString& name : formatpictures::names()) {
        const QByteArray bytes = formatpictures::file(name.toStdString());
        if (bytes.isEmpty()) {
            std::fprintf(stderr, "formatpictures: no encoder for %s\n", qPrintable(name));
            continue;
        }
        QSaveFile file(folder.filePath(name));
        if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
            continue;
        std::fprintf(stderr, "formatpictures: %s can't be written\n", qPrintable(file.fileName()));
        isWhole = false;
    }
    return isWhole ? 0 : 1;
}
