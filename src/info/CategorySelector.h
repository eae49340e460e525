#pragma once

#include <QStringList>
#include <QWidget>

class QButtonGroup;
class QHBoxLayout;

/// A row of joined buttons, of which one is chosen. Main thread.
class CategorySelector final : public QWidget {
    Q_OBJECT

public:
    explicit CategorySelector(QWidget* parent = nullptr);

    void setSegments(const QStringList& titles);
    void setSelectedSegment(int segment);

Q_SIGNALS:
    /// By the user, also the one that is chosen already.
    void segmentClicked(int segment);

private:
    QHBoxLayout* _layout;
    QButtonGroup* _buttons;
    QStringList _titles;
};
