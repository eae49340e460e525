#pragma once

#include <QAbstractSlider>

/// Five stars that set a rating: by a click, by dragging over them, and by keys. The star that is
/// the rating, and the room left of the first, take it away. Main thread.
class PBStarRatingCell final : public QAbstractSlider {
    Q_OBJECT

public:
    static constexpr int starCount = 5;
    static constexpr int starSize = 16;
    /// The width of the room left of the first star.
    static constexpr int leftRoom = 10;

    explicit PBStarRatingCell(QWidget* parent = nullptr);

    [[nodiscard]] int intValue() const { return value(); }
    /// The rating that the photographs have in common; mixed ones show no star.
    void setRating(int stars, bool isMixed);
    [[nodiscard]] QSize sizeHint() const override;

Q_SIGNALS:
    /// By the user; never the rating that is shown, unless that is mixed.
    void ratingIndicatorAction(int stars);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool event(QEvent* event) override;
    void sliderChange(SliderChange change) override;

private:
    [[nodiscard]] int starsAt(double x) const;
    /// Nothing for a key that means no rating.
    [[nodiscard]] int starsOfKey(const QKeyEvent& event) const;
    void choose(int stars);

    bool _isMixed = false;
    bool _isSetting = false; ///< by the program
    int _pressedStars = -1;  ///< where a press began; -1 without one
    int _trackedStars = -1;  ///< what would be set on release
    bool _hasMoved = false;  ///< to another star
};
