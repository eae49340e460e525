#pragma once

#include <QScrollArea>

class InfoRowsView;

/// The scroll area of a page of rows: no wider than its place, never lower. Main thread.
class InfoScrollArea final : public QScrollArea {
    Q_OBJECT

public:
    /// Becomes the owner of the page.
    explicit InfoScrollArea(InfoRowsView* view, QWidget* parent = nullptr);

    void scrollToTop();
};
