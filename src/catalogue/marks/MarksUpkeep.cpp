#include "catalogue/marks/MarksUpkeep.h"

#include "FMDB/FMDatabase.h"
#include "FMDB/FMTransaction.h"
#include "catalogue/marks/MarksFile.h"
#include "catalogue/marks/PhotographFile.h"
#include "platform/tasks/Operation.h"

#include <utility>

namespace marks {

namespace {

constexpr int storedTogether = 64;
constexpr std::chrono::seconds longestWait(2);

} // namespace

class MarksUpkeep::Work final : public platform::Operation {
public:
    explicit Work(MarksUpkeep& owner) : _owner(owner) {}

protected:
    void main() override {
        _owner._isWorkWaiting = false; // what changes from here on needs another one
        readFiles();
        constexpr std::chrono::hours between(1);
        const Clock::time_point last{Clock::duration(_owner._lastSnapshot)};
        if (!isCancelled() && Clock::now() - last >= between) _owner.takeSnapshot();
    }

private:
    void readFiles() {
        const auto ledger = _owner.openLedger();
        qint64 last = 0;
        while (ledger && !isCancelled()) {
            const auto rows = MarksLedger::rowsWithoutContent(*ledger, last, storedTogether);
            if (!rows || rows->empty()) return;
            last = rows->back().id;
            std::vector<std::pair<const LedgerRow*, FileContent>> read;
            for (const LedgerRow& row : *rows) {
                // Not to be read: gone, or another one that a scan has to look at first.
                auto content = contentOf(row.trace, [this] { return isCancelled(); });
                if (content) read.emplace_back(&row, *std::move(content));
            }
            if (read.empty()) continue;
            FMTransaction transaction(*ledger);
            for (const auto& [row, content] : read)
                MarksLedger(*ledger).setContent(*row, content.identity, content.digest);
            if (!transaction.commit()) return;
        }
    }

    MarksUpkeep& _owner;
};

MarksUpkeep::MarksUpkeep(Environment environment) : _environment(std::move(environment)) {}

MarksUpkeep::~MarksUpkeep() {
    finish();
}

void MarksUpkeep::wake() {
    if (!_isWorkWaiting.exchange(true)) _queue.addOperation(std::make_shared<Work>(*this));
}

std::unique_ptr<FMDatabase> MarksUpkeep::openLedger() const {
    auto ledger = std::make_unique<FMDatabase>(_environment.marksPath);
    if (_environment.observe) _environment.observe(*ledger);
    ledger->setLongestWait(longestWait);
    return ledger->open() ? std::move(ledger) : nullptr;
}

void MarksUpkeep::takeSnapshot() {
    _lastSnapshot = Clock::now().time_since_epoch().count();
    const auto ledger = openLedger();
    const bool isTaken =
        ledger &&
        marks::takeSnapshot(*ledger, _environment.snapshotFolder, QDateTime::currentDateTimeUtc());
    if (!isTaken && _environment.tell)
        _environment.tell(QStringLiteral("no copy of the ledger of marks could be made in %1")
                              .arg(_environment.snapshotFolder));
}

void MarksUpkeep::finish() {
    if (std::exchange(_isFinished, true)) return;
    _queue.cancelAllOperations();
    _queue.waitUntilAllOperationsAreFinished();
    takeSnapshot();
}

} // namespace marks
