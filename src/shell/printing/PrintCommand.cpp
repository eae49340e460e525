#include "shell/printing/PrintCommand.h"

#include "group/PBImageFileItem.h"
#include "shell/menus/MainMenu.h"
#include "shell/printing/PrintDialog.h"
#include "shell/services/ChosenPhotographs.h"

namespace {

std::vector<PrintedPhotograph> photographsOf(const PrintCommandParts& parts) {
    std::vector<PrintedPhotograph> photographs;
    group::FolderPathCache folders;
    for (const auto& item : parts.chosen.all()) {
        photographs.push_back(
            {.path = item->filePath(parts.folderPaths, folders),
             .name = item->fileName(),
             .imageSize = item->imageSize(),
             .angle = item->rotateAngle()});
    }
    return photographs;
}

} // namespace

void connectPrinting(const PrintCommandParts& parts) {
    parts.menu.connectCommand(MenuCommand::printImage, [parts] {
        auto photographs = photographsOf(parts);
        if (photographs.empty()) return;
        auto* dialog = new PrintDialog(std::move(photographs), parts.importers, parts.window);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->open();
    });
}
