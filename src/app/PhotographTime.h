#pragma once

#include <QObject>

#include <functional>

class PBImageView;

/// Tells when the first photograph was painted large and sharp, for `--stats`. Main thread.
class PhotographTime final : public QObject {
    Q_OBJECT

public:
    /// The view outlives this object. Called once.
    PhotographTime(PBImageView& view, std::function<void()> isPainted);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void look();

    PBImageView& _view;
    std::function<void()> _isPainted; // empty: was called
};
