#pragma once

#include <QWidget>

#include <functional>
#include <vector>

class QLabel;
class QPushButton;

/// Something that went wrong and stays so until somebody does something about it.
struct Notice {
    QString key;     ///< tells notices apart: one of each is shown
    QString text;    ///< one sentence
    QString details; ///< what it means, and what can be done
    QString action;  ///< the text of a button; empty for none
    std::function<void()> perform;
};

/// The one place of the window for such news: a bar over all panes, hidden while there is none. It
/// shows one at a time, the oldest first; closing it brings the next. Main thread.
class NoticeBar final : public QWidget {
    Q_OBJECT

public:
    explicit NoticeBar(QWidget* parent = nullptr);

    /// Shows the notice, or takes it in the place of that with its key. One that the user has
    /// closed is not shown again in this run.
    void tell(const Notice& notice);
    /// The trouble is over. It may be told again.
    void withdraw(const QString& key);

    /// What is on show; empty if nothing is.
    [[nodiscard]] QString text() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void dismiss();
    void showFirst();
    void updateColors();

    std::vector<Notice> _notices;
    QStringList _closed;
    QLabel* _icon;
    QLabel* _text;
    QLabel* _details;
    QPushButton* _action;
    QPushButton* _close;
};
