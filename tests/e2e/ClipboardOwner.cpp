// Owns the clipboard as a file manager does that has cut files: its arguments are their paths. Ends
// when somebody else takes the clipboard.

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QUrl>

#include <cstdio>

int main(int argumentCount, char** arguments) {
    const QGuiApplication application(argumentCount, arguments);
    QByteArray lines = "cut";
    QList<QUrl> urls;
    for (const QString& path : QGuiApplication::arguments().sliced(1)) {
        urls.append(QUrl::fromLocalFile(path));
        lines += '\n' + urls.constLast().toEncoded();
    }
    auto* data = new QMimeData;
    data->setUrls(urls);
    data->setData(QStringLiteral("x-special/gnome-copied-files"), lines);
    QClipboard* clipboard = QGuiApplication::clipboard();
    clipboard->setMimeData(data);
    QObject::connect(clipboard, &QClipboard::dataChanged, &application, [clipboard] {
        if (!clipboard->ownsClipboard()) QGuiApplication::quit();
    });
    std::puts("ready");
    std::fflush(stdout);
    return QGuiApplication::exec();
}
