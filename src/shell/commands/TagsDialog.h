#pragma once

#include "catalogue/marks/TagRows.h"

#include <QDialog>

#include <vector>

class QLineEdit;
class QPushButton;
class QTreeWidget;

/// The list of all tags, with what can be done to one of them. Deletes itself when it is closed.
/// Main thread.
class TagsDialog final : public QDialog {
    Q_OBJECT

public:
    explicit TagsDialog(QWidget* window);

    void setTags(std::vector<marks::TagRows::Count> tags);
    [[nodiscard]] const std::vector<marks::TagRows::Count>& tags() const { return _tags; }

Q_SIGNALS:
    /// The name may be that of another tag.
    void renameRequested(const QString& tag, const QString& name);
    void removeRequested(const QString& tag, qint64 photographs);

private:
    void refill();
    void updateButtons();
    [[nodiscard]] QString currentTag() const;
    void askForName();
    void askForOther();

    std::vector<marks::TagRows::Count> _tags;
    QLineEdit* _find;
    QTreeWidget* _list;
    QPushButton* _rename;
    QPushButton* _merge;
    QPushButton* _remove;
};
