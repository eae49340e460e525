#include "image/large/PBLoadImageManager.h"

#include "group/PBImageFileItem.h"
#include "image/large/ImageVersions.h"
#include "platform/program/FreeMemory.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <cstdlib>

using platform::MainLoop;

namespace {

LoadPace::Load loadOf(const PBLoadImageOperation& operation) {
    const QSizeF size = operation.imageSize();
    return {
        .index = operation.index(),
        .pixels = size.width() * size.height(),
        .isOriginal = operation.scale() >= 1.0};
}

} // namespace

PBLoadImageManager::PBLoadImageManager(LoadPace::Clock clock)
    : _pace(std::move(clock)),
      _releaseQueue(std::make_shared<platform::OperationQueue>(QStringLiteral("free pictures"))),
      _operationQueue(QStringLiteral("large images")) {}

PBLoadImageManager::~PBLoadImageManager() {
    finish();
}

void PBLoadImageManager::setScreen(const LargeImageScreen& screen) {
    platform::assertMainThread();
    const bool hasOtherColours = screen.colorSpace != _screen.colorSpace;
    _screen = screen;
    if (!hasOtherColours) return;
    cancelAllOperationExceptContextObjs({}, _focusIndex);
    for (const auto& [owner, observer] : _coloursObservers)
        observer();
}

void PBLoadImageManager::addColoursObserver(const void* owner, std::function<void()> observer) {
    platform::assertMainThread();
    _coloursObservers.emplace_back(owner, std::move(observer));
}

void PBLoadImageManager::removeColoursObserver(const void* owner) {
    platform::assertMainThread();
    std::erase_if(_coloursObservers, [owner](const auto& added) { return added.first == owner; });
}

void PBLoadImageManager::addLoadImageOperation(Operation operation, bool atEnd) {
    platform::assertMainThread();
    if (_isFinished) return;
    operation->_releaseQueue = _releaseQueue;
    operation->_isUrgent = !atEnd && !operation->isAhead();
    if (_waitingArray.size() >= mostWaiting) _waitingArray.pop_front();
    if (atEnd)
        _waitingArray.push_back(std::move(operation));
    else
        _waitingArray.push_front(std::move(operation));
    giveWay();
    tryFireOperation();
}

bool PBLoadImageManager::mayBegin(const Operation& operation) const {
    return _pace.mayBegin(loadOf(*operation));
}

void PBLoadImageManager::giveWay() {
    if (_loadingArray.empty() || _waitingArray.empty()) return;
    const Operation& running = _loadingArray.front();
    if (running->_isUrgent || running->isCancelled() || !_waitingArray.front()->_isUrgent) return;
    // While a key is held the user comes by what runs before long.
    if (_pace.isHurried()) return;
    running->cancel();
    const auto distance = [at = _waitingArray.front()->index()](const Operation& operation) {
        return std::abs(operation->index() - at);
    };
    const auto behind = std::ranges::find_if(_waitingArray, [&](const Operation& operation) {
        return !operation->_isUrgent && distance(operation) > distance(running);
    });
    _waitingArray.insert(behind, running->begunAnew());
}

void PBLoadImageManager::tryFireOperation() {
    platform::assertMainThread();
    const auto next = std::ranges::find_if(
        _waitingArray, [this](const Operation& operation) { return mayBegin(operation); });
    if (_loadingArray.empty() && next != _waitingArray.end()) {
        Operation operation = std::move(*next);
        _waitingArray.erase(next);
        begin(std::move(operation));
    }
    MainLoop* loop = MainLoop::instance();
    const auto wait = _pace.untilPause();
    if (!loop || !wait || _waitingArray.empty()) return;
    constexpr const char* name = "pause";
    loop->cancelPreviousPerformRequestsWithTarget(this, name);
    loop->performAfterDelay(
        this, name, std::chrono::ceil<std::chrono::milliseconds>(*wait), [this] {
            giveWay();
            tryFireOperation();
        });
}

void PBLoadImageManager::begin(Operation operation) {
    ++_figures.begun;
    if (_pace.isHurried()) ++_figures.begunInHaste;
    operation->_urgency = operation->_isUrgent ? codec::Urgency::Focus : codec::Urgency::Next;
    _loadingArray.push_back(operation);
    // As a piece of work, not as an operation of the queue: that would pass a cancelled one over,
    // and the line would wait for its report for ever.
    _operationQueue.addOperation([operation, alive = std::weak_ptr(_alive)] {
        operation->main();
        MainLoop::instance()->post(MainLoop::Mode::Common, [operation, alive] {
            if (const auto manager = alive.lock()) (*manager)->didFinish(operation);
        });
    });
}

void PBLoadImageManager::didFinish(const Operation& operation) {
    platform::assertMainThread();
    if (_isFinished) return;
    // One that was cancelled in its last moment brings nothing either: nobody would let it go.
    const LoadedImages images = operation->isCancelled() ? LoadedImages{} : operation->images();
    noteTime(*operation);
    for (const auto& link : std::vector(operation->_delegateArray)) {
        const auto display = link.lock(); // one display may end another
        if (!display) continue;
        (*display)->loadImageFinished(
            *operation, images, operation->scale(), operation->contextObj(), operation->index());
    }
    std::erase(_loadingArray, operation);
    tryFireOperation();
}

void PBLoadImageManager::noteTime(const PBLoadImageOperation& operation) {
    using Kind = LoadedImages::Kind;
    const Kind kind = operation.images().kind;
    if (kind == Kind::Nothing) ++_figures.stopped;
    if (kind == Kind::Images) _pace.didLoad(operation._loadTime, loadOf(operation));
    if (kind == Kind::Nothing) _pace.didStop(operation._loadTime, loadOf(operation));
}

void PBLoadImageManager::moveLoadImageOperaToHead(const PBLoadImageOperation& operation) {
    platform::assertMainThread();
    for (const Operation& running : _loadingArray)
        if (running.get() == &operation) running->_isUrgent = true;
    const auto found = std::ranges::find(_waitingArray, &operation, &Operation::get);
    if (found == _waitingArray.end()) return;
    (*found)->_isUrgent = true;
    std::rotate(_waitingArray.begin(), found, std::next(found));
    giveWay();
}

PBLoadImageManager::Found PBLoadImageManager::loadImageOperationOfContextObj(
    const PBImageFileItem& item, double scale) const {
    platform::assertMainThread();
    const auto isWanted = [&](const Operation& operation) {
        return operation->contextObj().get() == &item && operation->scale() == scale &&
               !operation->isCancelled();
    };
    if (const auto found = std::ranges::find_if(_loadingArray, isWanted);
        found != _loadingArray.end())
        return {*found, true};
    const auto found = std::ranges::find_if(_waitingArray, isWanted);
    return found == _waitingArray.end() ? Found{} : Found{*found, false};
}

void PBLoadImageManager::cancelAllOperationExceptContextObjs(
    std::span<const std::shared_ptr<PBImageFileItem>> items,
    std::optional<std::int64_t> focusIndex) {
    platform::assertMainThread();
    const auto isStranger = [items](const Operation& operation) {
        return std::ranges::find(items, operation->contextObj()) == items.end();
    };
    for (const Operation& operation : _loadingArray)
        if (isStranger(operation)) operation->cancel();
    std::erase_if(_waitingArray, isStranger);
    _focusIndex = focusIndex;
    if (items.empty() || !items.front()) return;
    clearNotNowMarkers(*items.front());
    if (focusIndex) _pace.didStep(*focusIndex);
}

void PBLoadImageManager::itemWasReplaced(
    const PBImageFileItem& former, const std::shared_ptr<PBImageFileItem>& item) {
    platform::assertMainThread();
    const auto isOfFormer = [&former](const Operation& operation) {
        return operation->contextObj().get() == &former;
    };
    if (former.fileSize() != item->fileSize() || former.modifiedDate() != item->modifiedDate()) {
        std::erase_if(_waitingArray, isOfFormer);
        for (const Operation& operation : _loadingArray)
            if (isOfFormer(operation)) operation->cancel();
        return;
    }
    const auto handOn = [&](const Operation& operation) {
        if (isOfFormer(operation)) operation->_contextObj = item;
    };
    std::ranges::for_each(_loadingArray, handOn);
    std::ranges::for_each(_waitingArray, handOn);
}

void PBLoadImageManager::steppingDidEnd() {
    platform::assertMainThread();
    _pace.didEndStepping();
    giveWay();
    tryFireOperation();
}

void PBLoadImageManager::returnFreeMemory() {
    platform::assertMainThread();
    MainLoop* loop = MainLoop::instance();
    if (_isFinished || !loop) return;
    // The last pictures go, and what comes next is painted first.
    constexpr std::chrono::milliseconds soon(500);
    constexpr const char* name = "memory";
    loop->cancelPreviousPerformRequestsWithTarget(this, name);
    loop->performAfterDelay(
        this, name, soon, [this] { _releaseQueue->addOperation(&platform::returnFreeMemory); });
}

void PBLoadImageManager::finish() {
    if (std::exchange(_isFinished, true)) return;
    _alive.reset();
    if (MainLoop* loop = MainLoop::instance()) loop->cancelPreviousPerformRequestsWithTarget(this);
    _waitingArray.clear();
    for (const Operation& operation : _loadingArray)
        operation->cancel();
    _operationQueue.cancelAllOperations();
    _operationQueue.waitUntilAllOperationsAreFinished();
    _loadingArray.clear();
}
