#pragma once

#include "library/PBAliasObject.h"
#include "platform/tasks/BoundedCalls.h"
#include "platform/volumes/Bookmark.h"

#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <stop_token>

/// Looks through whole disks for the folders of roots, behind all else: one disk at a time each,
/// all roots of a disk at once. No part of the work that the program has before it is idle. Main
/// thread.
class RootSearch {
public:
    /// Told on the main thread: where the folder is, that it is gone, or that there is no answer.
    using Answer = std::function<void(qint64 aliasId, const PBAliasResolution& resolution)>;
    /// A last look for a folder that is gone as far as the search could see, since it may have come
    /// in the meantime. Called on the thread of the search.
    using LastLook = std::function<PBAliasResolution()>;

    explicit RootSearch(Answer answer);
    RootSearch(const RootSearch&) = delete;
    RootSearch& operator=(const RootSearch&) = delete;
    /// Ends all searches.
    ~RootSearch();

    /// Begins to look for the root, unless that is being done. One that was looked for before, in
    /// vain, is looked for only `again`: nothing that the program hears of says that this is worth
    /// it.
    void
    find(qint64 aliasId, const platform::Bookmark& bookmark, LastLook lastLook, bool again = false);
    /// The root was found otherwise: answers that are still to come are void.
    void forget(qint64 aliasId);

private:
    struct Wanted;
    struct Shared;
    struct State {
        std::uint64_t ticket = 0;
        bool isSearching = false;
    };

    static void work(const std::shared_ptr<Shared>& shared, const QString& disk);
    static void searchDisk(const std::shared_ptr<Shared>& shared, std::vector<Wanted> wanted);
    void take(qint64 aliasId, std::uint64_t ticket, const PBAliasResolution& resolution);

    const Answer _answer;
    std::map<qint64, State> _states;
    std::uint64_t _lastTicket = 0;
    /// Answers that come when this object is gone find it empty.
    const std::shared_ptr<RootSearch*> _self;
    const std::shared_ptr<Shared> _shared;
    platform::BoundedCalls _calls;
};
