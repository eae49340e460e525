#pragma once

#include <QString>

class LargeView;
class QWidget;
class StatusBarView;

/// Tells the user a sentence where it is seen: in the status bar of the view in force, or in a tip
/// at the window's lower edge while there is no status bar. Main thread.
class StatusNews {
public:
    struct Parts {
        QWidget& window;
        StatusBarView& statusBarView;
        LargeView& largeView;
    };

    /// The parts outlive this object.
    explicit StatusNews(const Parts& parts) : _parts(parts) {}

    void tell(const QString& sentence) const;

private:
    const Parts _parts;
};
