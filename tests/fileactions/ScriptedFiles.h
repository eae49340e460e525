#pragma once

#include "fileactions/copy/FileTransfer.h"
#include "support/FaultyFiles.h"

namespace support {

/// Answers from a script, and keeps what it was asked and told.
struct ScriptedPrompts : fileactions::FilePrompts {
    std::vector<ConflictAnswer> answers; ///< in turn; then to stop
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
        return true;
    }
    void tellFailure(const fileactions::FileFailure& failure) override {
        log += u"failed "_s + QFile::decodeName(platform::nameOfPath(failure.path));
    }
    bool askDeleteForGood(std::int64_t) override { return false; }
    void progress(const fileactions::FileProgress& progress) override {
        if (onProgress) onProgress(progress);
    }
};

/// Makes this content, or fails.
inline auto making(const QByteArray& made, std::errc error = {}) {
    return [made, error](const std::stop_token&, QByteArray& content) {
        content = made;
        return std::make_error_code(error);
    };
}

/// A folder with two more in it, "a" and "b", and what carries out plans between them.
struct Transfers {
    Transfers() {
        EXPECT_TRUE(QDir(folder.path()).mkdir(u"a"_s) && QDir(folder.path()).mkdir(u"b"_s));
    }
    QByteArray path(const QByteArray& name) const {
        return platform::pathInFolder(QFile::encodeName(folder.path()), name);
    }
    QString at(const QByteArray& name) const { return QFile::decodeName(path(name)); }
    void put(const QByteArray& name, const QByteArray& bytes) const { writeFile(at(name), bytes); }
    QByteArray read(const QByteArray& name) const { return readFile(at(name)); }
    /// All there is below the folder, hidden files too.
    QStringList names(const QString& below = {}) const {
        return QDir(folder.filePath(below))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    using TransferPlan = fileactions::TransferPlan;
    fileactions::TransferResult run(const TransferPlan& plan) {
        const platform::NamesOnDisk spellings = files.names();
        return fileactions::FileTransfer({.files = files,
                                          .temporaries = temporaries,
                                          .rows = *following,
                                          .prompts = prompts,
                                          .copyWord = u"copy"_s,
                                          .names = spellings})
            .run(plan, {});
    }
    TransferPlan plan(
        TransferPlan::Kind kind, std::vector<QByteArray> sources,
        const QByteArray& into = "b") const {
        for (QByteArray& source : sources)
            source = path(source);
        return fileactions::planTransfer(kind, sources, path(into));
    }

    QTemporaryDir folder;
    FaultyFiles files;
    fileactions::TemporaryFiles temporaries{files, path("journal")};
    fileactions::FollowingRows none;
    fileactions::FollowingRows* following = &none; ///< the files
    ScriptedPrompts prompts;
};

struct TransferFixture : testing::Test, Transfers {};

} // namespace support
