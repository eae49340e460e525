// iconsheet FILE.png [RATIO]: every symbol at 16, 24 and 32 points, at rest and selected, on the
// backgrounds of both themes, for the eyes of whoever draws them.
#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDirIterator>
#include <QPainter>

#include <cstdio>

namespace {

constexpr int sides[] = {16, 24, 32};
constexpr int cellHeight = 40;
constexpr int nameWidth = 150;
constexpr int sheetColumns = 3;

QStringList allNames() {
    [[maybe_unused]] const QIcon loadsTheSymbols = Icons::named(QStringLiteral("folder"));
    QStringList names;
    QDirIterator files(QStringLiteral(":/icons"), QDir::Files);
    while (files.hasNext()) {
        files.next();
        const QString name = files.fileInfo().completeBaseName();
        if (!name.endsWith(u"_s")) names.append(name);
    }
    names.sort();
    return names;
}

/// The symbol in all sizes, at rest and selected; answers the width that was taken.
int drawSizes(QPainter& painter, QPoint at, const QString& name) {
    const int left = at.x();
    at.rx() += 6;
    for (const QString& form : {QStringLiteral("_n"), QStringLiteral("_s")}) {
        const QIcon icon = Icons::named(name + form);
        for (const int side : sides) {
            icon.paint(&painter, QRect(at.x(), at.y() + (cellHeight - side) / 2, side, side));
            at.rx() += side + 6;
        }
    }
    return at.x() - left;
}

QImage drawSheet(double ratio) {
    const QStringList names = allNames();
    const qsizetype rows = (names.size() + sheetColumns - 1) / sheetColumns;
    const int formsWidth = 2 * (16 + 24 + 32 + 3 * 6) + 6;
    const int columnWidth = nameWidth + 2 * formsWidth;
    QImage sheet(
        QSize(sheetColumns * columnWidth, static_cast<int>(rows) * cellHeight) * ratio,
        QImage::Format_RGB32);
    sheet.setDevicePixelRatio(ratio);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    for (qsizetype i = 0; i < names.size(); ++i) {
        QPoint at(
            static_cast<int>(i / rows) * columnWidth, static_cast<int>(i % rows) * cellHeight);
        painter.setPen(Qt::black);
        painter.drawText(
            QRect(at, QSize(nameWidth - 4, cellHeight)), Qt::AlignVCenter | Qt::AlignRight,
            names[i]);
        at.rx() += nameWidth;
        for (const auto scheme : {PBThemes::Scheme::Light, PBThemes::Scheme::Dark}) {
            PBThemes::apply(scheme);
            painter.fillRect(QRect(at, QSize(formsWidth, cellHeight)), PBThemes::colors().bar);
            at.rx() += drawSizes(painter, at, names[i]);
        }
    }
    painter.end();
    return sheet;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Draws every symbol of the program."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("FILE.png"), QStringLiteral("The sheet."));
    parser.addPositionalArgument(
        QStringLiteral("RATIO"), QStringLiteral("Pixels a point, at least 1; 1 without it."),
        QStringLiteral("[RATIO]"));
    parser.process(application);
    const QStringList words = parser.positionalArguments();
    const double ratio = words.size() > 1 ? words[1].toDouble() : 1.0;
    if (words.isEmpty() || words.size() > 2 || ratio < 1) parser.showHelp(2);
    const QImage sheet = drawSheet(ratio);
    if (sheet.save(words[0])) return 0;
    std::fprintf(stderr, "iconsheet: %s can't be written\n", qPrintable(words[0]));
    return 1;
}
