#pragma once

#include "fileactions/copy/TransferPrompts.h"

#include <QObject>
#include <QPixmap>
#include <QString>

class QDialog;
class QLabel;
class QProgressBar;
class QWidget;

/// The sheet with the progress of a command on files. It blocks the window only, and nothing waits
/// for it. Main thread.
class PBFileProgressWindowController final : public QObject {
    Q_OBJECT

public:
    enum ReturnCode { Ended = -1000, Cancelled = -1001 };

    /// The window outlives this object.
    explicit PBFileProgressWindowController(QWidget& window);
    ~PBFileProgressWindowController() override;

    /// Shows the sheet; away while something is asked, it comes back by this.
    void begin();
    void takeDown();
    [[nodiscard]] bool isShown() const;
    /// Closes the sheet.
    void end(ReturnCode code);

    /// `text` says what is done with the file of that number.
    void show(const QString& text, const fileactions::FileProgress& progress);
    /// A null picture is that of a file of no kind that we know.
    void setImage(const QPixmap& image);

Q_SIGNALS:
    /// By the user; the sheet is closed.
    void cancelled();

private:
    void cancel();

    QDialog* _sheet; ///< a child of the window
    QLabel* progressLabel;
    QLabel* filePathLabel;
    QLabel* _bytesLabel;
    QLabel* imageView;
    QProgressBar* progressIndicator;
    bool _isEnding = false; ///< or going down for a while: it is not the user who closes it
};
