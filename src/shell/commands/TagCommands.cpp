#include "shell/commands/TagCommands.h"

#include "fileactions/marks/EditRunner.h"
#include "platform/program/HarmlessText.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "shell/commands/TagsDialog.h"
#include "ui/WindowAlert.h"

#include <QLocale>

#include <algorithm>

using fileactions::EditRunner;
using fileactions::PhotographEdit;
using platform::briefText;
using platform::localizedFormat;
using platform::localizedString;

void TagCommands::show() {
    platform::assertMainThread();
    if (!_dialog) {
        _dialog = new TagsDialog(&_parts.window);
        QObject::connect(
            _dialog, &TagsDialog::renameRequested, _dialog,
            [this](const QString& tag, const QString& name) { rename(tag, name); });
        QObject::connect(
            _dialog, &TagsDialog::removeRequested, _dialog,
            [this](const QString& tag, qint64 photographs) { remove(tag, photographs); });
        QObject::connect(
            &_parts.edits, &EditRunner::didEdit, _dialog,
            [this](const fileactions::EditResult& result) {
                using enum fileactions::EditResult::Kind;
                if (result.kind == Tags || result.kind == TagEverywhere) fill();
            });
        QObject::connect(&_parts.edits, &EditRunner::didReadAgain, _dialog, [this] { fill(); });
    }
    fill();
    _dialog->show();
    _dialog->activateWindow();
}

void TagCommands::fill() {
    _parts.edits.countTags([dialog = _dialog](auto counts) {
        if (counts && dialog) dialog->setTags(std::move(*counts));
    });
}

void TagCommands::run(PhotographEdit::Change change) {
    _parts.edits.run({.fileIds = {}, .change = std::move(change)});
}

void TagCommands::rename(const QString& tag, const QString& name) {
    const PhotographEdit::RenameTag renamed{.tag = tag, .name = name.trimmed()};
    if (renamed.name.isEmpty() || renamed.name == tag) return;
    const bool isTaken = tag.compare(renamed.name, Qt::CaseInsensitive) != 0 &&
                         std::ranges::any_of(_dialog->tags(), [&](const auto& known) {
                             return known.tag.compare(renamed.name, Qt::CaseInsensitive) == 0;
                         });
    if (!isTaken) return run(renamed);
    askInWindow(
        *_dialog,
        {.message = localizedFormat(u"TagsMergeQuestion", {briefText(renamed.name)}),
         .details = localizedFormat(u"TagsMergeDetails", {briefText(tag), briefText(renamed.name)}),
         .consent = localizedString(u"TagsMergeConsent"),
         .other = {}},
        [this, renamed](WindowAnswer answer) {
            if (answer == WindowAnswer::Consent) run(renamed);
        });
}

void TagCommands::remove(const QString& tag, qint64 photographs) {
    const QString message =
        photographs == 0 ? localizedFormat(u"TagsRemoveQuestion_0", {briefText(tag)})
        : photographs == 1
            ? localizedFormat(u"TagsRemoveQuestion_1", {briefText(tag)})
            : localizedFormat(
                  u"TagsRemoveQuestion", {briefText(tag), QLocale().toString(photographs)});
    askInWindow(
        *_dialog,
        {.message = message,
         .details = localizedString(u"TagsRemoveDetails"),
         .consent = localizedString(u"TagsRemoveConsent"),
         .other = {}},
        [this, tag](WindowAnswer answer) {
            if (answer == WindowAnswer::Consent) run(PhotographEdit::RemoveTag{.tag = tag});
        });
}
