#pragma once

#include "platform/files/FileSystem.h"
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
    QByteArray otherDisk;        ///< part of the paths that lie on it; empty: one disk
    bool isMountedTwice = false; ///< that is the same one, at another place
    QByteArray goesByItself;     ///< just before it is removed
    QByteArray growsByItself;    ///< while it is copied
    QByteArray leaves;           ///< part of the paths of a disk that leaves when a file is copied
    bool isAway = false;         ///< it has left
    QByteArray failed;           ///< the step that failed

    std::error_code look(const QByteArray& path, Entry& entry) override {
        if (fails("look") || hasLeft(path)) return error();
        const auto result = DiskFileSystem::look(inItsCase(path), entry);
        if (!result && isOnOtherDisk(path) && !isMountedTwice) ++entry.device;
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

} // namespace support
