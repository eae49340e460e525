#pragma once

#include "platform/tasks/OperationQueue.h"
#include "viewer/slideshow/SlideshowStage.h"
#include "viewer/slideshow/transitions/TransitionFrame.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <cstdint>
#include <memory>

class TransitionSurface;
struct TransitionEngine;

/// The picture area: shows one picture, and takes it over into the next. Pictures are made ready
/// for the area's size beside the main thread before a transition begins. Main thread.
class PBSlideshowView final : public QWidget, public SlideshowStage {
    Q_OBJECT

public:
    explicit PBSlideshowView(const TransitionEngine& engine, QWidget* parent = nullptr);
    ~PBSlideshowView() override;

    void setTransitionStyle(TransitionStyle style) override { _transitionStyle = style; }
    void setTransitionDuration(double duration) override { _transitionDuration = duration; }
    void transitionToImage(const QImage& image, double angle) override;
    void clearTransition() override;
    void setAnimationDidStop(Ended ended) override { _ended = std::move(ended); }

    [[nodiscard]] TransitionSurface& surface() { return *_surface; }
    [[nodiscard]] bool isRunning() const { return _isRunning; }
    /// Whether a picture is on show, or is about to be.
    [[nodiscard]] bool hasPicture() const { return !_target.image.isNull(); }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    struct Picture {
        QImage image;
        double angle = 0;
    };
    /// What is made ready beside the main thread.
    struct Prepared {
        QImage from;
        QImage to;
        std::shared_ptr<const TransitionMap> map;
    };

    [[nodiscard]] QSize pixelSize() const;
    void prepare();
    void begin(const Prepared& prepared);
    void showNow();
    void finish(bool finished);

    TransitionStyle _transitionStyle = TransitionStyle::Fade;
    double _transitionDuration = 1.0; // seconds
    Ended _ended = [](bool) {};
    TransitionSurface* _surface; // a child
    Picture _source;             // what is shown, or was before the transition
    Picture _target;             // what is shown from its end on
    TransitionFrame _frame;      // from, to and map for the present size, once they are ready
    TransitionStyle _preparedStyle = TransitionStyle::Fade; // of the map
    bool _isRunning = false;     // from the call to the end, ready or not
    double _runningDuration = 0; // seconds
    QElapsedTimer _clock;        // since the first frame
    QTimer _ticks;
    std::uint64_t _preparation = 0; // an answer to an earlier one is dropped
    std::shared_ptr<PBSlideshowView*> _alive = std::make_shared<PBSlideshowView*>(this);
    platform::OperationQueue _queue;
};
