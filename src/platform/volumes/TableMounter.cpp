#include "platform/volumes/TableMounter.h"

#include "platform/tasks/MainThread.h"
#include "platform/volumes/DesktopShare.h"

#include <QFile>
#include <QProcess>

#include <algorithm>
#include <array>
#include <memory>

#include <mntent.h>

namespace platform {

namespace {

struct CloseTable {
    void operator()(FILE* table) const { ::endmntent(table); }
};

bool hasAnyOption(const mntent& entry, std::initializer_list<const char*> options) {
    return std::ranges::any_of(
        options, [&](const char* option) { return ::hasmntopt(&entry, option) != nullptr; });
}

/// Completions go with `calls`.
void runToMount(
    const QObject& calls, const QString& program, const QStringList& arguments,
    VolumeMounter::Completion completion) {
    // No child of anybody: one that hangs in the kernel must not be waited for.
    auto* process = new QProcess;
    const auto end = [process, completion = std::move(completion)] {
        const bool isDone = process->error() == QProcess::UnknownError && process->exitCode() == 0;
        const QString told = QString::fromLocal8Bit(process->readAllStandardError()).trimmed();
        process->deleteLater();
        completion(isDone ? QString() : told.isEmpty() ? process->errorString() : told);
    };
    QObject::connect(process, &QProcess::finished, &calls, end);
    QObject::connect(
        process, &QProcess::errorOccurred, &calls, [end](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart) end();
        });
    // Nobody is there to answer what it may ask for.
    process->setStandardInputFile(QProcess::nullDevice());
    process->start(program, arguments);
}

} // namespace

TableMounter::Entry TableMounter::entryOf(const QByteArray& source) const {
    const std::unique_ptr<FILE, CloseTable> table(
        ::setmntent(QFile::encodeName(_system.table).constData(), "re"));
    mntent entry{};
    std::array<char, 4096> text{};
    while (table && !source.isEmpty() &&
           ::getmntent_r(table.get(), &entry, text.data(), static_cast<int>(text.size()))) {
        if (source != entry.mnt_fsname) continue;
        const bool isAutomatic = hasAnyOption(entry, {"x-systemd.automount"});
        if (isAutomatic || hasAnyOption(entry, {"user", "users"}))
            return {QFile::decodeName(entry.mnt_dir), isAutomatic};
    }
    return {};
}

bool TableMounter::canMount(const FileSystemIdentity& fileSystem) const {
    return !entryOf(fileSystem.source).place.isEmpty();
}

void TableMounter::mount(const FileSystemIdentity& fileSystem, Completion completion) {
    assertMainThread();
    const Entry entry = entryOf(fileSystem.source);
    runToMount(
        _calls, entry.isAutomatic ? _system.look : _system.mount, {entry.place},
        std::move(completion));
}

bool ShareMounter::canMount(const FileSystemIdentity& fileSystem) const {
    return isDesktopMount(fileSystem.type) && !addressOfDesktopShare(fileSystem.source).isEmpty();
}

void ShareMounter::mount(const FileSystemIdentity& fileSystem, Completion completion) {
    assertMainThread();
    runToMount(
        _calls, _program, {QStringLiteral("mount"), addressOfDesktopShare(fileSystem.source)},
        std::move(completion));
}

bool AnyMounter::canMount(const FileSystemIdentity& fileSystem) const {
    return std::ranges::any_of(
        _mounters, [&](const VolumeMounter* mounter) { return mounter->canMount(fileSystem); });
}

void AnyMounter::mount(const FileSystemIdentity& fileSystem, Completion completion) {
    const auto able = std::ranges::find_if(
        _mounters, [&](const VolumeMounter* mounter) { return mounter->canMount(fileSystem); });
    if (able != _mounters.end()) (*able)->mount(fileSystem, std::move(completion));
}

} // namespace platform
