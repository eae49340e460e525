#include "codec/process/HelperShelf.h"
#include "codec/process/OrderFiles.h"

#include <QDeadlineTimer>

using codec::Urgency;
using codec::process::HelperShelf;
using codec::process::MemoryBudget;

namespace {

struct UrgencyTest : OrderFiles {
    static std::shared_ptr<HelperShelf> shelf(int shared, int reserved) {
        return std::make_shared<HelperShelf>(HelperShelf::Settings{
            .executable = MISBEHAVING_DECODER,
            .addressSpaceBytes = std::uint64_t{6} << 30,
            .shared = shared,
            .reserved = reserved,
            .availableMemory = [] { return std::uint64_t{1} << 30; }});
    }

    using Lease = std::unique_ptr<HelperShelf::Lease>;
    /// Nothing where it would have to wait.
    static Lease tryTake(const std::shared_ptr<HelperShelf>& shelf, Urgency urgency) {
        auto lease = std::make_unique<HelperShelf::Lease>(shelf, urgency, support::stopped());
        return lease->isUsable() ? std::move(lease) : nullptr;
    }
};

TEST_F(UrgencyTest, ThumbnailsLeaveOneProcessAloneAndGiveWayToTheFocus) {
    const auto shelf = this->shelf(2, 1);
    Lease first = tryTake(shelf, Urgency::Thumbnail);
    Lease onShow = tryTake(shelf, Urgency::ThumbnailOnShow);
    EXPECT_TRUE(first && onShow);
    EXPECT_FALSE(tryTake(shelf, Urgency::ThumbnailOnShow)) << "the last one is kept back";
    Lease properties = tryTake(shelf, Urgency::Properties);
    EXPECT_TRUE(properties);
    EXPECT_FALSE(tryTake(shelf, Urgency::Next));
    Lease focus = tryTake(shelf, Urgency::Focus);
    EXPECT_TRUE(focus) << "it gets a process of its own";
    first.reset();
    properties.reset();
    EXPECT_FALSE(tryTake(shelf, Urgency::Thumbnail)) << "the user waits";
    EXPECT_TRUE(tryTake(shelf, Urgency::Next));
    EXPECT_TRUE(tryTake(shelf, Urgency::Properties));
    focus->setInBackground();
    EXPECT_TRUE(tryTake(shelf, Urgency::Thumbnail));
    focus.reset();
    EXPECT_TRUE(tryTake(shelf, Urgency::Thumbnail)) << "counted once";
    // All are back, and the one too many is gone.
    onShow.reset();
    std::vector<Lease> all;
    for (int index = 0; index < 3; ++index)
        all.push_back(tryTake(shelf, Urgency::Next));
    EXPECT_TRUE(std::ranges::all_of(all, [](const Lease& lease) { return !!lease; }));
    EXPECT_FALSE(tryTake(shelf, Urgency::Next));
}

TEST_F(UrgencyTest, ThoseWhoWaitAreServedByTheirUrgency) {
    const auto shelf = this->shelf(1, 0);
    Lease taken = tryTake(shelf, Urgency::Next);
    ASSERT_TRUE(taken);
    std::mutex mutex;
    std::vector<Urgency> served;
    std::vector<std::jthread> threads;
    const std::vector order{
        Urgency::Next, Urgency::ThumbnailOnShow, Urgency::Thumbnail, Urgency::Properties};
    for (const Urgency urgency : {order[2], order[3], order[0], order[1]})
        threads.emplace_back([&, urgency] {
            const HelperShelf::Lease lease(shelf, urgency, {});
            const std::lock_guard lock(mutex);
            served.push_back(urgency);
        });
    EXPECT_TRUE(support::spinUntil([&] { return shelf->waiting() == 4; }));
    taken.reset();
    threads.clear();
    EXPECT_EQ(served, order);
}

TEST_F(UrgencyTest, MemoryGoesToWhatTheUserWaitsForBeforeThoseInLine) {
    MemoryBudget budget([] { return 200U; });
    auto first = budget.take(100, {});
    std::jthread thumbnail(
        [&](const std::stop_token& stop) { EXPECT_FALSE(budget.take(100, stop)); });
    EXPECT_TRUE(support::spinUntil([&] { return budget.waiting() == 1; }));
    MemoryBudget::Share urgent;
    std::jthread focus([&] { urgent = budget.take(100, {}, true); });
    EXPECT_TRUE(support::spinUntil([&] { return budget.waiting() == 2; }));
    first.reset();
    focus.join();
    EXPECT_TRUE(urgent);
    thumbnail = {};
}

TEST_F(UrgencyTest, EachKindHasItsTimeAndReducedPicturesThatTheUserLooksAtThatOfFullOnes) {
    using namespace std::chrono_literals;
    using enum codec::ReadStatus;
    const std::tuple<int, Urgency, codec::ReadStatus> cases[] = {
        {0, Urgency::Thumbnail, NotNow},
        {256, Urgency::Thumbnail, NotNow},
        {256, Urgency::Focus, Decoded},
        {256, Urgency::Next, Decoded}};
    for (const auto& [maxSize, urgency, status] : cases) {
        codec::DecoderPool::Settings hasty = settings(1, 1h);
        (maxSize == 0 ? hasty.fullTime : hasty.thumbnailTime) = 200ms;
        codec::DecoderPool hurried(hasty);
        const auto request = requestFor(maxSize, urgency);
        const QDeadlineTimer deadline(200);
        EXPECT_EQ(hurried.decode(orders("spin 400").get(), {}, request, {}).status, status);
        EXPECT_TRUE(deadline.hasExpired());
    }
}

} // namespace
