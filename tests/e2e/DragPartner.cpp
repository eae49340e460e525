// A window for tests of dragging: tells on standard output what is dropped on it. Arguments: its
// place on the screen as x, y, width and height, and a path to offer to whoever drags it off.

#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>
#include <QWidget>

#include <cstdio>
#include <memory>

namespace {

void tell(const QString& event) {
    std::puts(qPrintable(event));
    std::fflush(stdout);
}

class Partner final : public QWidget {
public:
    explicit Partner(QString offered) : _offered(std::move(offered)) { setAcceptDrops(true); }

protected:
    void paintEvent(QPaintEvent*) override {
        if (!std::exchange(_wasShown, true)) tell(QStringLiteral("shown"));
    }
    void dragEnterEvent(QDragEnterEvent* event) override {
        event->acceptProposedAction();
        tell(QStringLiteral("entered"));
    }
    void dropEvent(QDropEvent* event) override {
        event->acceptProposedAction();
        for (const QUrl& url : event->mimeData()->urls())
            tell(QStringLiteral("dropped ") + url.toLocalFile());
        tell(QStringLiteral("done"));
    }
    void mousePressEvent(QMouseEvent*) override {}
    void mouseMoveEvent(QMouseEvent* event) override {
        if (_offered.isEmpty() || !event->buttons().testFlag(Qt::LeftButton)) return;
        auto* drag = new QDrag(this); // Qt deletes it
        auto offer = std::make_unique<QMimeData>();
        offer->setUrls({QUrl::fromLocalFile(_offered)});
        drag->setMimeData(offer.release());
        tell(QStringLiteral("dragging"));
        const Qt::DropAction action = drag->exec(Qt::CopyAction | Qt::LinkAction);
        tell(QStringLiteral("taken %1").arg(action != Qt::IgnoreAction));
    }

private:
    const QString _offered;
    bool _wasShown = false;
};

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 5) return 2;
    Partner partner(arguments.value(5));
    partner.setGeometry(
        arguments[1].toInt(), arguments[2].toInt(), arguments[3].toInt(), arguments[4].toInt());
    partner.show();
    return QApplication::exec();
}
