#include "viewer/ImageViewAccessible.h"

#include "group/PBImageFileItem.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "ui/PhotographText.h"
#include "viewer/PBImageView.h"

#include <memory>

using platform::localizedFormat;
using platform::localizedString;

namespace {

QAccessibleInterface* makeAccessible(const QString& className, QObject* object) {
    if (className != QLatin1String(PBImageView::staticMetaObject.className())) return nullptr;
    auto* view = qobject_cast<PBImageView*>(object);
    return view ? std::make_unique<ImageViewAccessible>(*view).release() : nullptr; // Qt owns it
}

} // namespace

ImageViewAccessible::ImageViewAccessible(PBImageView& view)
    : QAccessibleWidget(&view, QAccessible::Graphic), _view(view) {}

void ImageViewAccessible::install() {
    platform::assertMainThread();
    [[maybe_unused]] static const bool done = (QAccessible::installFactory(makeAccessible), true);
}

void ImageViewAccessible::imageDidChange(PBImageView& view) {
    if (!QAccessible::isActive()) return;
    for (const QAccessible::Event kind :
         {QAccessible::NameChanged, QAccessible::DescriptionChanged}) {
        QAccessibleEvent event(&view, kind);
        QAccessible::updateAccessibility(&event);
    }
}

QString ImageViewAccessible::text(QAccessible::Text kind) const {
    const auto item = _view.focusImageFileItem();
    if (kind == QAccessible::Name) return item ? item->fileName() : localizedString(u"No Photo");
    if (kind != QAccessible::Description || !item) return QAccessibleWidget::text(kind);
    const QSize size = item->displaySize().toSize();
    const QStringList parts{
        localizedFormat(u"Accessible_PhotoSize", {size.width(), size.height()})};
    return (parts + spokenMarks(*item)).join(QStringLiteral(", "));
}
