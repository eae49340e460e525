#pragma once

#include "group/PBGroupItem.h"
#include "scan/PBScanAttachOperation.h"
#include "scan/PBScanDictionary.h"

#include <memory>
#include <vector>

/// The kinds of attached work. Each goes by the dictionary of the time when it was made: if another
/// scan has begun since, it still changes the catalogue, and what it publishes is dropped.

/// Takes images out of the work tree. The chains come from the live tree.
class PBRemoveFileItemOperation final : public PBScanAttachOperation {
public:
    PBRemoveFileItemOperation(
        PBScanDictionaryRef dictionary, std::vector<PBGroupItemChain> groupItemArray)
        : _dictionary(std::move(dictionary)), _groupItemArray(std::move(groupItemArray)) {}
    void runWithOwnerNSOperation(platform::Operation& owner, bool isLast) override;

private:
    const PBScanDictionaryRef _dictionary;
    const std::vector<PBGroupItemChain> _groupItemArray;
};

/// Moves the images under unknown places whose address was found since to the group of their place.
/// Publishes where there are any.
class PBRegroupPlacesOperation final : public PBScanAttachOperation {
public:
    explicit PBRegroupPlacesOperation(PBScanDictionaryRef dictionary)
        : _dictionary(std::move(dictionary)) {}
    void runWithOwnerNSOperation(platform::Operation& owner, bool isLast) override;
    [[nodiscard]] bool publishesWhenLast() const override { return false; }

private:
    const PBScanDictionaryRef _dictionary;
};

/// Looks for new images in one folder, while a scan of it or of one above may be running.
class PBScanFolderAttachOperation final : public PBScanAttachOperation {
public:
    explicit PBScanFolderAttachOperation(PBScanDictionaryRef dictionary)
        : _dictionary(std::move(dictionary)) {}
    void runWithOwnerNSOperation(platform::Operation& owner, bool isLast) override;
    [[nodiscard]] bool publishesWhenLast() const override { return false; }

private:
    const PBScanDictionaryRef _dictionary;
};

/// Tests every image of the work tree against the disk, or only those of rewritten files; what is
/// gone goes from tree and catalogue. Of the rewritten files, by their paths, size and date are
/// compared, too. However many of these wait for the same tree, it is walked once.
class PBCheckFileItemExistAttachOperation final : public PBScanAttachOperation {
public:
    explicit PBCheckFileItemExistAttachOperation(
        PBScanDictionaryRef dictionary, QStringList rewrittenFiles = {}, bool onlyRewritten = false)
        : _dictionary(std::move(dictionary)), _rewrittenFiles(std::move(rewrittenFiles)),
          _onlyRewritten(onlyRewritten) {}
    void runWithOwnerNSOperation(platform::Operation& owner, bool isLast) override;
    [[nodiscard]] bool publishesWhenLast() const override { return false; }
    bool takesOver(const PBScanAttachOperation& later) override;

private:
    const PBScanDictionaryRef _dictionary;
    QStringList _rewrittenFiles; // until it runs, guarded by the mailbox
    bool _onlyRewritten;         // the same
};

/// When rewritten files were looked for: shows the tree without those that did not come back.
class PBEndRewritingOperation final : public PBScanAttachOperation {
public:
    explicit PBEndRewritingOperation(PBScanDictionaryRef dictionary)
        : _dictionary(std::move(dictionary)) {}
    void runWithOwnerNSOperation(platform::Operation& owner, bool isLast) override;
    [[nodiscard]] bool publishesWhenLast() const override { return false; }

private:
    const PBScanDictionaryRef _dictionary;
};

/// When all that was watched is looked at: gives marks back to what turned up elsewhere, or was
/// written anew.
class PBRestoreMarksOperation final : public PBScanAttachOperation {
public:
    explicit PBRestoreMarksOperation(PBScanDictionaryRef dictionary)
        : _dictionary(std::move(dictionary)) {}
    void runWithOwnerNSOperation(platform::Operation& owner, bool isLast) override;

private:
    const PBScanDictionaryRef _dictionary;
};

/// The same as an operation of its own, at whose checkpoints attached work runs.
class PBCheckFileItemExistOperation final : public platform::Operation {
public:
    explicit PBCheckFileItemExistOperation(PBScanDictionaryRef dictionary)
        : _dictionary(std::move(dictionary)) {}

protected:
    void main() override;

private:
    const PBScanDictionaryRef _dictionary;
};
