#pragma once

#include "fileactions/copy/FileTransfer.h"
#include "platform/files/PathNames.h"
#include "platform/files/Spelling.h"
#include "support/Support.h"

namespace support {

/// The disk, of which one step fails, and folders of which some count as another disk.
class FaultyFiles final : public platform::DiskFileSystem {
public:
    using Entry = platform::FileSystem::Entry;
    int failAt = 0; ///< the number of the step, from 1; 0: none
    std::errc fault = std::errc::io_error;
    QByteArray otherDisk;     ///< part of the paths that lie on it; empty: one disk
    QByteArray goesByItself;  ///< just before it is removed
    QByteArray growsByItself; ///< while it is copied
    QByteArray leaves;        ///< part of the paths of a disk that leaves when a file is copied
    bool isAway = false;      ///< it has left
    QByteArray failed;        ///< the step that failed

    std::error_code look(const QByteArray& path, Entry& entry) override {
        if (fails("look") || hasLeft(path)) return error();
        const auto result = DiskFileSystem::look(inItsCase(path), entry);
        if (!result && isOnOtherDisk(path)) ++entry.device;
        return result;
    }
    std::error_code openSource(const QByteArray& path, int& file, Entry& entry) override {
        if (fails("openSource")) return error();
        const auto result = DiskFileSystem::openSource(path, file, entry);
        if (!result && isOnOtherDisk(path)) ++entry.device;
        return result;
    }
    std::error_code create(const QByteArray& path, int& file) override {
        return fails("create") ? error() : DiskFileSystem::create(path, file);
    }
    std::error_code copySome(int from, int to, std::int64_t& copied) override {
        if (!growsByItself.isEmpty()) {
            QFile late(QFile::decodeName(std::exchange(growsByItself, {})));
            EXPECT_TRUE(late.open(QIODevice::Append) && late.write("!") == 1);
        }
        return fails("copySome") ? error() : DiskFileSystem::copySome(from, to, copied);
    }
    std::error_code copyAttributes(int from, int to) override {
        isAway = isAway || !leaves.isEmpty();
        return fails("copyAttributes") ? error() : DiskFileSystem::copyAttributes(from, to);
    }
    std::error_code sync(int file) override {
        return fails("sync") ? error() : DiskFileSystem::sync(file);
    }
    std::error_code syncFolder(const QByteArray& folder) override {
        return fails("syncFolder") ? error() : DiskFileSystem::syncFolder(folder);
    }
    std::error_code close(int file) override {
        const auto result = DiskFileSystem::close(file);
        return fails("close") ? error() : result;
    }
    std::error_code renameToFree(const QByteArray& path, const QByteArray& toPath) override {
        if (isOnOtherDisk(path) != isOnOtherDisk(toPath))
            return std::make_error_code(std::errc::cross_device_link);
        if (fails("renameToFree") || hasLeft(toPath)) return error();
        return DiskFileSystem::renameToFree(path, toPath);
    }
    std::error_code renameOver(const QByteArray& path, const QByteArray& toPath) override {
        if (isOnOtherDisk(path) != isOnOtherDisk(toPath))
            return std::make_error_code(std::errc::cross_device_link);
        return fails("renameOver") ? error() : DiskFileSystem::renameOver(path, toPath);
    }
    std::error_code remove(const QByteArray& path) override {
        if (path == goesByItself) static_cast<void>(DiskFileSystem::remove(path));
        return fails("remove") || hasLeft(path) ? error() : DiskFileSystem::remove(path);
    }
    std::error_code makeFolder(const QByteArray& path, std::uint32_t mode) override {
        // As a stick does.
        if (refusesColon && platform::nameOfPath(path).contains(':'))
            return std::make_error_code(std::errc::invalid_argument);
        return fails("makeFolder") ? error() : DiskFileSystem::makeFolder(path, mode);
    }
    std::error_code removeFolder(const QByteArray& path) override {
        return fails("removeFolder") ? error() : DiskFileSystem::removeFolder(path);
    }
    bool refusesColon = false;
    QByteArray withoutCase; ///< part of the folders that find names in any case; empty: none

    /// As a disk says it that takes no note of case.
    [[nodiscard]] QByteArray inItsCase(const QByteArray& path) const {
        const QByteArray folder = platform::folderOfPath(path);
        if (withoutCase.isEmpty() || !folder.contains(withoutCase)) return path;
        for (const QString& name : QDir(QFile::decodeName(folder)).entryList(QDir::Files)) {
            const QByteArray other = platform::pathInFolder(folder, QFile::encodeName(name));
            if (other.toLower() == path.toLower()) return other;
        }
        return path;
    }
    /// Such a disk.
    [[nodiscard]] platform::NamesOnDisk names() const {
        const platform::NamesOnDisk& real = platform::NamesOnDisk::real();
        return {
            [this, &real](const QString& path) {
                return real.identity(QFile::decodeName(inItsCase(QFile::encodeName(path))));
            },
            real.names};
    }

private:
    [[nodiscard]] bool fails(const char* step) {
        if (++_steps != failAt) return false;
        failed = step;
        return true;
    }
    [[nodiscard]] bool hasLeft(const QByteArray& path) const {
        return isAway && !leaves.isEmpty() && path.contains(leaves);
    }
    [[nodiscard]] std::error_code error() const { return std::make_error_code(fault); }
    [[nodiscard]] bool isOnOtherDisk(const QByteArray& path) const {
        return !otherDisk.isEmpty() && path.contains(otherDisk);
    }
    int _steps = 0;
};

/// Answers from a script, and keeps what it was asked and told.
struct ScriptedPrompts : fileactions::FilePrompts {
    std::vector<ConflictAnswer> answers; ///< in turn; then to stop
    bool skips = true;
    bool deletesForGood = false;
    QStringList log;
    std::function<void(const fileactions::FileProgress&)> onProgress;

    ConflictAnswer askConflict(const fileactions::FileFailure& conflict) override {
        log += u"conflict "_s + QFile::decodeName(platform::nameOfPath(conflict.destination));
        if (answers.empty()) return {};
        const ConflictAnswer answer = answers.front();
        answers.erase(answers.begin());
        return answer;
    }
    bool askSkip(const fileactions::FileFailure& failure) override {
        log += u"skip? "_s + QFile::decodeName(platform::nameOfPath(failure.path));
        return skips;
    }
    void tellFailure(const fileactions::FileFailure& failure) override {
        log += u"failed "_s + QFile::decodeName(platform::nameOfPath(failure.path));
    }
    bool askDeleteForGood(std::int64_t count) override {
        log += u"delete %1?"_s.arg(count);
        return deletesForGood;
    }
    void progress(const fileactions::FileProgress& progress) override {
        if (onProgress) onProgress(progress);
    }
};

/// A folder with two more in it, "a" and "b", and what carries out plans between them.
struct TransferFixture : testing::Test {
    TransferFixture() {
        EXPECT_TRUE(QDir(folder.path()).mkdir(u"a"_s) && QDir(folder.path()).mkdir(u"b"_s));
    }
    QByteArray path(const QByteArray& name) const {
        return platform::pathInFolder(QFile::encodeName(folder.path()), name);
    }
    void put(const QByteArray& name, const QByteArray& bytes) const {
        writeFile(QFile::decodeName(path(name)), bytes);
    }
    QByteArray read(const QByteArray& name) const {
        return readFile(QFile::decodeName(path(name)));
    }
    /// All there is below the folder, hidden files too.
    QStringList names(const QString& below = {}) const {
        return QDir(folder.filePath(below))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    fileactions::TransferResult
    run(const fileactions::TransferPlan& plan, const std::stop_token& stop = {}) {
        return fileactions::FileTransfer({.files = files,
                                          .temporaries = temporaries,
                                          .rows = rows,
                                          .prompts = prompts,
                                          .copyWord = u"copy"_s})
            .run(plan, stop);
    }
    fileactions::TransferPlan plan(
        fileactions::TransferPlan::Kind kind, const std::vector<QByteArray>& sources,
        const QByteArray& into = "b") const {
        std::vector<QByteArray> paths;
        for (const QByteArray& source : sources)
            paths.push_back(path(source));
        return fileactions::planTransfer(kind, paths, path(into));
    }

    QTemporaryDir folder;
    FaultyFiles files;
    fileactions::TemporaryFiles temporaries{files, path("journal")};
    fileactions::FollowingRows rows;
    ScriptedPrompts prompts;
};

} // namespace support
