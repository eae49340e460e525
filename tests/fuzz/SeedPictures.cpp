// fuzz_seeds FOLDER: writes small pictures for the fuzzers to begin with, one for each kind of file
// that a library at hand can write or that is quickly made by hand.

#include "codec/MadePictures.h"

#include <QCommandLineParser>
#include <QCoreApplication>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("Where they go."));
    parser.process(application);
    if (parser.positionalArguments().size() != 1) parser.showHelp(2);
    const QDir folder(parser.positionalArguments().front());
    int number = 0;
    for (const made::Picture& picture : made::samples()) {
        // What the fuzzer of pixels asks for stands in the last byte: in full or reduced, and the
        // type that the name says where the content alone does not decide.
        for (const int size : {0, 8}) {
            const QByteArray seed =
                picture.bytes + static_cast<char>(made::fuzzerHint(picture) | size);
            support::writeFile(folder.filePath(QString::number(++number)), seed);
        }
    }
    return 0;
}
