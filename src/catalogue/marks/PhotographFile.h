#pragma once

#include "catalogue/marks/Marks.h"
#include "catalogue/marks/MarksMatching.h"

#include <functional>

/// The files of the photographs that the ledger knows. Blocks as long as the disk does; never on
/// the main thread.
namespace marks {

/// SHA-256 of the whole file; empty when it can't be read, or `isCancelled` answers true.
[[nodiscard]] QByteArray
digestOfFile(const QByteArray& path, const std::function<bool()>& isCancelled = {});

/// What is where the ledger has the photograph. `canReadFiles`: where size and date leave it open,
/// the content decides.
[[nodiscard]] Place placeOf(const LedgerRow& row, bool canReadFiles);

/// What is known of a file while it was what the catalogue says.
struct FileContent {
    platform::FileIdentity identity;
    QByteArray digest;
};
/// Identity and digest of the trace's file; nothing when it is another one by now, changes
/// meanwhile, or can't be read.
[[nodiscard]] std::optional<FileContent>
contentOf(const Trace& trace, const std::function<bool()>& isCancelled = {});

} // namespace marks
