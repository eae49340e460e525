#pragma once

#include "shell/ShellFixture.h"
#include "shell/files/FileTasks.h"
#include "shell/services/ChosenPhotographs.h"

#include <QWidget>

/// Answers by itself, and keeps what it was asked and told.
struct ScriptedQuestions final : FileQuestions {
    using Answer = fileactions::FilePrompts::Answer;
    QString folder;
    Answer answer = Answer::Skip;
    bool deletes = true;
    std::function<void()> whileAsked = [] {};
    QStringList log;

    void askConflict(const Failure&, std::function<void(const ConflictAnswer&)> answered) override {
        log += u"conflict"_s;
        answered({answer, false});
    }
    void askSkip(const Failure&, std::function<void(bool)> answered) override { answered(true); }
    void
    tellFailure(Deed, const Failure& failure, qint64 count, std::function<void()> closed) override {
        log +=
            u"failed %1 %2"_s.arg(count).arg(QFile::decodeName(platform::nameOfPath(failure.path)));
        closed();
    }
    void askDeleteForGood(
        qint64 count, const QByteArray&, bool, std::function<void(bool)> answered) override {
        log += u"delete %1?"_s.arg(count);
        whileAsked();
        answered(deletes);
    }
    void chooseFolder(const QString&, std::function<void(const QString&)> chosen) override {
        chosen(folder);
    }
};

/// Photographs that are chosen, in folders "one" and "two", and what carries commands on them out.
struct FilesFixture : ShellFixture {
    explicit FilesFixture(std::chrono::milliseconds sheetDelay)
        : tasks(
              {.services = files,
               .aliasManager = manager,
               .questions = questions,
               .window = window,
               .thumbnail = [](qint64) { return QImage(); },
               .sheetDelay = sheetDelay}) {}
    void wait() {
        EXPECT_TRUE(support::spinUntil([this] { return tasks.isIdle(); }));
        runPosted();
    }

    QWidget window;
    ScriptedQuestions questions;
    PBImageFileList items;
    struct Choice final : ChosenPhotographs {
        explicit Choice(PBImageFileList& of) : items(of) {}
        PBImageFileList all() const override { return items; }
        std::shared_ptr<PBImageFileItem> first() const override {
            return items.empty() ? nullptr : items.front();
        }
        PBImageFileList& items;
    };
    Choice choice{items};
    support::KnownFolders folders{{{1, path(u"one")}, {2, path(u"two")}}};
    FileTasks tasks;
};
