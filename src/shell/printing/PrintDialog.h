#pragma once

#include "platform/tasks/BoundedCalls.h"
#include "platform/tasks/OperationQueue.h"
#include "shell/printing/PrintJob.h"

#include <QDialog>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

class PBImageImporterManager;
class QCheckBox;
class QComboBox;
class QLabel;
class QPageLayout;
class QPrinter;
class QPrintPreviewWidget;
class QProgressBar;
class QPushButton;
class QToolButton;
class QVBoxLayout;

/// Shows how photographs will lie on paper, and prints them, or writes them to a PDF file. Pictures
/// are read, and pages painted, on a thread of its own. Main thread.
class PrintDialog final : public QDialog {
    Q_OBJECT

public:
    /// At least one photograph. The importers outlive the dialog.
    PrintDialog(
        std::vector<PrintedPhotograph> photographs, PBImageImporterManager& importers,
        QWidget& window);
    /// Stops what runs, and waits for it.
    ~PrintDialog() override;

    /// Cancels the printing while that goes on, and leaves the dialog open; else closes it.
    void reject() override;

private:
    [[nodiscard]] QWidget* makeControls();
    [[nodiscard]] QWidget* makePageButtons();
    [[nodiscard]] QWidget* makeButtons();
    [[nodiscard]] int perPage() const;
    [[nodiscard]] QPageLayout pageLayout() const;
    [[nodiscard]] PrintPlan plan() const;

    /// A printer is made on another thread: that asks the system's printers, which may take long.
    void makePrinter(const std::function<void(std::shared_ptr<QPrinter> printer)>& take);
    void makePreview(std::shared_ptr<QPrinter> printer);
    void updatePreview();
    void readPreview();
    void didRead(int index, const QImage& picture);
    void paintPreview(QPrinter* printer);
    void pageDidChange();

    void print();
    void choosePrinter(const std::shared_ptr<QPrinter>& printer);
    void savePdf();
    void start(std::unique_ptr<PrintTarget> target);
    void didEnd(const PrintJob::Result& result);
    void setWorking(bool isWorking);

    const std::vector<PrintedPhotograph> _photographs;
    PBImageImporterManager& _importers;
    std::shared_ptr<QPrinter> _previewPrinter; ///< nullptr until it is there
    std::vector<std::optional<QImage>>
        _previewPictures; ///< those that were read; fewer than all of a long document
    std::shared_ptr<platform::Operation> _previewJob;
    std::shared_ptr<platform::Operation> _job; ///< nullptr while nothing is printed

    QPrintPreviewWidget* _preview = nullptr; ///< likewise
    QVBoxLayout* _previewPlace = nullptr;
    QComboBox* _perPage = nullptr;
    QComboBox* _paper = nullptr;
    QCheckBox* _names = nullptr;
    QLabel* _page = nullptr;
    QToolButton* _previous = nullptr;
    QToolButton* _next = nullptr;
    QPushButton* _print = nullptr;
    QProgressBar* _progress = nullptr;
    std::vector<QWidget*> _idleWidgets; ///< of no use while something is printed
    QTimer _repaint;
    /// Expires with this object; looked at on the main thread only.
    const std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
    platform::BoundedCalls _printers;
    int _printerCount = 0;
    platform::OperationQueue _queue{QStringLiteral("print")}; // ends before all else
};
