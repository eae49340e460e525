#pragma once

#include <QImage>
#include <QMimeData>

#include <functional>

/// Files on the pasteboard; of a single photograph also its picture, which is made when somebody
/// asks for it. Main thread.
class PhotographMimeData final : public QMimeData {
    Q_OBJECT

public:
    using Decode = std::function<QImage(const QString& path)>;
    explicit PhotographMimeData(Decode decode) : _decode(std::move(decode)) {}

    /// `rotateAngle`: degrees counter-clockwise at which it is shown.
    void setPhotograph(const QString& path, double rotateAngle);

    [[nodiscard]] QStringList formats() const override;
    [[nodiscard]] bool hasFormat(const QString& mimeType) const override;

protected:
    [[nodiscard]] QVariant retrieveData(const QString& mimeType, QMetaType type) const override;

private:
    const Decode _decode;
    QString _path; ///< empty: no picture
    double _rotateAngle = 0;
    mutable QImage _picture;
};
