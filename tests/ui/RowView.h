#pragma once

#include <QStringList>
#include <QWidget>

#include <cstdint>

/// Rows of 10 points; the second one is no more than a head.
class RowView final : public QWidget {
    Q_OBJECT

public:
    RowView() { setFocusPolicy(Qt::StrongFocus); }
    [[nodiscard]] int rowAt(const QPoint& point) const {
        return point.y() < count * 10 ? point.y() / 10 : -1;
    }

    int count = 3;
    int current = -1;
    std::uint64_t generation = 1;
    QStringList performed;
};
