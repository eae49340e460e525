#include "library/RootSearch.h"

#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "platform/tasks/Mutex.h"
#include "platform/tasks/PoliteWork.h"
#include "platform/volumes/VolumeSearch.h"

#include <utility>
#include <vector>

#include <pthread.h>

using platform::MainLoop;
using Outcome = PBAliasResolution::Outcome;

namespace {

void post(std::function<void()> function) {
    if (auto* loop = MainLoop::instance()) {
        loop->post(MainLoop::Mode::Common, std::move(function));
    }
}

} // namespace

struct RootSearch::Wanted {
    platform::Bookmark bookmark;
    LastLook lastLook;
    std::function<void(const PBAliasResolution&)> answer;
};

/// What the threads of the search use.
struct RootSearch::Shared {
    std::stop_source stop;
    platform::Mutex mutex;
    std::map<QString, std::vector<Wanted>> wanted VELMORA_GUARDED_BY(mutex); // by disk
};

RootSearch::RootSearch(Answer answer)
    : _answer(std::move(answer)), _self(std::make_shared<RootSearch*>(this)),
      _shared(std::make_shared<Shared>()) {}

RootSearch::~RootSearch() {
    _shared->stop.request_stop();
}

void RootSearch::find(
    qint64 aliasId, const platform::Bookmark& bookmark, LastLook lastLook, bool again) {
    platform::assertMainThread();
    const auto known = _states.find(aliasId);
    if (known != _states.end() && (known->second.isSearching || !again)) return;
    const std::uint64_t ticket = ++_lastTicket;
    _states[aliasId] = {ticket, true};
    const std::weak_ptr<RootSearch*> self = _self;
    const auto answer = [self, aliasId, ticket](const PBAliasResolution& resolution) {
        post([self, aliasId, ticket, resolution] {
            if (const auto alive = self.lock()) (*alive)->take(aliasId, ticket, resolution);
        });
    };
    const QString disk =
        QString::fromUtf8(bookmark.fileSystem.type + ' ' + bookmark.fileSystem.source);
    {
        const platform::Lock lock(_shared->mutex);
        _shared->wanted[disk].push_back({bookmark, std::move(lastLook), answer});
    }
    // Not waited for: the answers come by themselves.
    (void)_calls.call<bool>(
        disk, QStringLiteral("search"), std::chrono::milliseconds(0),
        [shared = _shared, disk] {
            work(shared, disk);
            return true;
        },
        {});
}

void RootSearch::forget(qint64 aliasId) {
    platform::assertMainThread();
    _states.erase(aliasId);
}

void RootSearch::take(qint64 aliasId, std::uint64_t ticket, const PBAliasResolution& resolution) {
    const auto known = _states.find(aliasId);
    if (known == _states.end() || known->second.ticket != ticket) return;
    known->second.isSearching = false;
    _answer(aliasId, resolution);
}

void RootSearch::work(const std::shared_ptr<Shared>& shared, const QString& disk) {
    pthread_setname_np(pthread_self(), "search");
    platform::giveWayToOthers();
    while (!shared->stop.stop_requested()) {
        std::vector<Wanted> wanted;
        {
            const platform::Lock lock(shared->mutex);
            wanted = std::exchange(shared->wanted[disk], {});
        }
        if (wanted.empty()) return;
        // A name may be that of several disks, one after the other.
        while (!wanted.empty()) {
            std::vector<Wanted> ofOneDisk;
            const platform::FileSystemIdentity first = wanted.front().bookmark.fileSystem;
            std::erase_if(wanted, [&](Wanted& one) {
                if (!one.bookmark.fileSystem.agreesWith(first)) return false;
                ofOneDisk.push_back(std::move(one));
                return true;
            });
            searchDisk(shared, std::move(ofOneDisk));
        }
    }
}

void RootSearch::searchDisk(const std::shared_ptr<Shared>& shared, std::vector<Wanted> wanted) {
    std::vector<platform::Bookmark> bookmarks;
    for (const Wanted& one : wanted)
        bookmarks.push_back(one.bookmark);
    platform::PoliteWork politeness(shared->stop.get_token());
    const platform::Volumes volumes;
    const platform::VolumeSearch search(
        volumes, [&] { return politeness.goOn(); }, shared->stop.get_token());
    const auto outcomes = search.run(bookmarks, [&](std::size_t index, const QString& path) {
        wanted[index].answer({.outcome = Outcome::Found, .path = path});
    });
    for (std::size_t i = 0; i < wanted.size() && !shared->stop.stop_requested(); ++i) {
        if (outcomes[i] == Outcome::Found) continue;
        PBAliasResolution resolution{.outcome = outcomes[i]};
        if (resolution.outcome == Outcome::Gone) {
            const PBAliasResolution last = wanted[i].lastLook();
            if (last.outcome != Outcome::NotFound) resolution = last;
        }
        wanted[i].answer(resolution);
    }
}
