#pragma once

#include "platform/tasks/OperationQueue.h"
#include "shell/printing/PrintJob.h"

#include <QDialog>
#include <QTimer>

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

    void readPreview();
    void didRead(int index, const QImage& picture);
    void paintPreview(QPrinter* printer);
    void pageDidChange();

    void print();
    void savePdf();
    void start(std::unique_ptr<PrintTarget> target);
    void didEnd(const PrintJob::Result& result);
    void setWorking(bool isWorking);

    const std::vector<PrintedPhotograph> _photographs;
    PBImageImporterManager& _importers;
    std::unique_ptr<QPrinter> _previewPrinter;
    std::vector<std::optional<QImage>>
        _previewPictures; ///< those that were read; fewer than all of a long document
    std::shared_ptr<platform::Operation> _previewJob;
    std::shared_ptr<platform::Operation> _job; ///< nullptr while nothing is printed

    QPrintPreviewWidget* _preview = nullptr;
    QComboBox* _perPage = nullptr;
    QComboBox* _paper = nullptr;
    QCheckBox* _names = nullptr;
    QLabel* _page = nullptr;
    QToolButton* _previous = nullptr;
    QToolButton* _next = nullptr;
    QProgressBar* _progress = nullptr;
    std::vector<QWidget*> _idleWidgets; ///< of no use while something is printed
    QTimer _repaint;
    /// Expires with this object; looked at on the main thread only.
    const std::shared_ptr<bool> _alive = std::make_shared<bool>(true);
    platform::OperationQueue _queue{QStringLiteral("print")}; // ends before all else
};
