// A new tree in the group panel, laid out, against a plain tree widget's items made for the same
// rows: 100,000 photographs in 2,500 groups of 50 years, as they are published while a scan is
// running.

#include "platform/tasks/MainLoop.h"
#include "shell/groups/GroupPanel.h"
#include "support/Ratio.h"

#include <QApplication>
#include <QStandardItemModel>
#include <QTreeView>

namespace {

constexpr int years = 50;
constexpr int foldersOfYear = 50;
constexpr int photographsOfFolder = 40;
constexpr int rounds = 9;

class Photographs {
public:
    Photographs() {
        for (int year = 0; year < years; ++year)
            for (int folder = 0; folder < foldersOfYear; ++folder)
                for (int number = 0; number < photographsOfFolder; ++number)
                    add(year, folder);
    }
    void add(int year, int folder) {
        const PBValue taken(PBDate{year * 31'557'600.0 + 15'000'000});
        PBGroupItem& first =
            PBGroupItem::sortAddGroupItem(*work, nullptr, group::CaptureYear, taken);
        PBGroupItem& leaf = PBGroupItem::sortAddGroupItem(
            first.children(), &first, group::Folder,
            PBValue(QStringLiteral("/photos/Trip %1").arg(folder)));
        leaf.sortAddImageFileItem(
            PBImageFileItem::imageFileItemWithId(++_lastId, 1, QStringLiteral("a.jpg"), 1, 1), 0,
            false);
    }
    const std::shared_ptr<PBGroupItemArray> work = std::make_shared<PBGroupItemArray>();

private:
    qint64 _lastId = 0;
};

void layOut(const QTreeView& view, const QModelIndex& row) {
    bench::keep(view.visualRect(row));
}

/// What a program does that knows nothing of rows that stay.
void fillPlainView(QTreeView& view, QStandardItemModel& model) {
    model.clear();
    for (int year = 0; year < years; ++year) {
        auto* parent = new QStandardItem(QString::number(1970 + year));
        for (int folder = 0; folder < foldersOfYear; ++folder)
            parent->appendRow(new QStandardItem(QStringLiteral("Trip %1").arg(folder)));
        model.appendRow(parent);
    }
    view.expandAll();
    layOut(view, model.index(0, 0));
}

bool measurePanel() {
    QStandardItemModel plainModel;
    QTreeView plainView;
    plainView.setHeaderHidden(true);
    plainView.setUniformRowHeights(true);
    plainView.setModel(&plainModel);
    plainView.resize(230, 400);
    plainView.show();

    PBGroupTreeDataSource source;
    GroupPanel panel(
        source, [](qint64) { return QString(); }, [](const PBGroupItemData&) {});
    const std::unique_ptr<PBGroupOutlineView> view(panel.view());
    view->resize(230, 400);
    view->show();
    Photographs photographs;
    source.setGroupItemArray_work(photographs.work);

    int round = 0;
    const auto swap = [&](bool withNewGroup) {
        ++round;
        photographs.add(round % years, withNewGroup ? foldersOfYear + round : 0);
        const auto publication = group::makeGroupPublication(photographs.work);
        return bench::millisecondsOf([&] {
            source.groupItemArrayDidFinish(publication);
            layOut(*view, view->model()->index(0, 0, view->rootIndex()));
        });
    };
    swap(true);
    const auto floor = [&] { fillPlainView(plainView, plainModel); };
    bool met = bench::printRatio(
        "swap with a new group, 2,500 groups / plain items", rounds, floor,
        [&] { return swap(true); }, 1.0);
    met &= bench::printRatio(
        "swap with the same groups / plain items", rounds, floor, [&] { return swap(false); }, 0.5);
    return met;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const platform::MainLoop loop;
    return measurePanel() ? 0 : 1;
}
