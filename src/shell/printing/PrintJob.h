#pragma once

#include "platform/tasks/Operation.h"
#include "shell/printing/PrintPage.h"

#include <functional>
#include <memory>
#include <vector>

class PBImageImporterManager;
class QPagedPaintDevice;

/// Where pages go. Used by one thread at a time.
class PrintTarget {
public:
    PrintTarget() = default;
    PrintTarget(const PrintTarget&) = delete;
    PrintTarget& operator=(const PrintTarget&) = delete;
    virtual ~PrintTarget() = default;

    [[nodiscard]] virtual QPagedPaintDevice& device() = 0;
    /// Nothing is painted any more. What is not wanted leaves nothing behind. False where it could
    /// not be written.
    [[nodiscard]] virtual bool end(bool isWanted) = 0;
};

/// A PDF file, which is there when it is whole; what was there before stays until then.
[[nodiscard]] std::unique_ptr<PrintTarget>
pdfTarget(const QString& path, const QPageLayout& layout);

/// What a document is made of.
struct PrintPlan {
    std::vector<PrintedPhotograph> photographs;
    int perPage = 1;
    bool hasNames = false;
};

/// Distances on the page, in inches.
namespace PrintSizes {
inline constexpr double gap = 0.16;
inline constexpr double nameLine = 0.16;
} // namespace PrintSizes

/// Reads the photographs one after the other, each as large as the paper can show it, and paints
/// them. Runs on a queue; a cancellation ends it within one photograph.
class PrintJob final : public platform::Operation {
public:
    struct Result {
        bool isWritten = false;
        int unreadable = 0; ///< photographs in whose place the reason stands
    };
    /// Both are called on the thread of the queue; `ended` once.
    struct Calls {
        std::function<void(int done)> progress;
        std::function<void(const Result& result)> ended;
    };
    PrintJob(
        PrintPlan plan, std::unique_ptr<PrintTarget> target, PBImageImporterManager& importers,
        Calls calls);

protected:
    void main() override;

private:
    [[nodiscard]] bool paintPages();

    const PrintPlan _plan;
    std::unique_ptr<PrintTarget> _target;
    PBImageImporterManager& _importers;
    const Calls _calls;
    int _unreadable = 0;
};

/// Reads small pictures of the photographs for a preview, in their order.
class PrintPreviewJob final : public platform::Operation {
public:
    /// Called on the thread of the queue, with a null picture where there is none.
    using DidRead = std::function<void(int index, const QImage& picture)>;
    PrintPreviewJob(
        std::vector<PrintedPhotograph> photographs, int side, PBImageImporterManager& importers,
        DidRead didRead);

protected:
    void main() override;

private:
    const std::vector<PrintedPhotograph> _photographs;
    const int _side;
    PBImageImporterManager& _importers;
    const DidRead _didRead;
};
