#pragma once

#include <QAccessibleWidget>

class PBImageFileItem;
class PBImageView;

/// The image area for screen readers: a picture with the photograph's name, size and marks. Main
/// thread.
class ImageViewAccessible final : public QAccessibleWidget {
public:
    explicit ImageViewAccessible(PBImageView& view);

    /// Makes Qt use this class for image views. Once for the process.
    static void install();
    /// Another photograph is shown, or its marks are others; nothing while nobody listens.
    static void imageDidChange(PBImageView& view);

    [[nodiscard]] QString text(QAccessible::Text kind) const override;

private:
    PBImageView& _view;
};
