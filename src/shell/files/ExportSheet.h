#pragma once

#include "fileactions/export/PictureExport.h"

#include <QDialog>

#include <cstdint>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QHBoxLayout;
class QLabel;
class QSlider;
class QSpinBox;

/// How photographs are to be exported: type, quality or compression, metadata, location, size. The
/// desktop's own dialog for the place comes after it. Main thread.
class ExportSheet final : public QDialog {
    Q_OBJECT

public:
    /// `count`: of the photographs.
    ExportSheet(const fileactions::ExportSettings& settings, std::int64_t count, QWidget& window);

    /// What is chosen. What the type hides stays as it was.
    [[nodiscard]] fileactions::ExportSettings settings() const;

private:
    void setSaveType();
    [[nodiscard]] QString saveUti() const;

    const fileactions::ExportSettings _before;
    QFormLayout* _rows;
    QComboBox* _type;
    QHBoxLayout* _quality; // of the slider and its value
    QSlider* _saveQualitySlider;
    QLabel* _qualityValue;
    QComboBox* _tiffCompressionBtn;
    QCheckBox* _metadata;
    QCheckBox* _location;
    QCheckBox* _isSizeLimited;
    QSpinBox* _maxSize;
};
