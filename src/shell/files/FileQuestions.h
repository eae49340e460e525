#pragma once

#include "fileactions/copy/TransferPrompts.h"

#include <functional>

/// What the user is asked and told about files. Each call returns at once and answers later, once.
/// Main thread.
class FileQuestions {
public:
    using Failure = fileactions::FileFailure;
    using ConflictAnswer = fileactions::FilePrompts::ConflictAnswer;

    /// What was to be done with a file that failed.
    enum class Deed { Copy, Move, Trash, Delete, Restore, Export, Share };

    virtual ~FileQuestions() = default;
    virtual void
    askConflict(const Failure& conflict, std::function<void(const ConflictAnswer&)> answered) = 0;
    /// To leave it out, or to stop.
    virtual void askSkip(const Failure& failure, std::function<void(bool skips)> answered) = 0;
    virtual void
    tellFailure(Deed deed, const Failure& failure, qint64 count, std::function<void()> closed) = 0;
    /// `withoutTrash`: since their disk has none; else by the user's own wish. `path` is that of a
    /// single one.
    virtual void askDeleteForGood(
        qint64 count, const QByteArray& path, bool withoutTrash,
        std::function<void(bool isDeleted)> answered) = 0;
    /// A folder for files to go to, which the user may make; empty where he wants none.
    virtual void
    chooseFolder(const QString& title, std::function<void(const QString& path)> chosen) = 0;
};
