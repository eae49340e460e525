#pragma once

#include "BrowserTree.h"
#include "FakeServices.h"

#include "browser/PBImageBrowserScrollView.h"
#include "browser/PBImageBrowserView.h"
#include "support/Support.h"
#include "ui/PBModalTextField.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPointingDevice>

inline QImage plain(QColor color, QSize size = {300, 200}) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(color);
    return image;
}

/// The real view, without a display, over a tree of a test's own; driven by events like those of
/// Qt.
struct BrowserViewTest : ::testing::Test {
    void show(std::initializer_list<int> counts) {
        tree = std::make_unique<BrowserTree>(counts);
        view = std::make_unique<PBImageBrowserView>(scrollView, services);
        services.buffer.setBrowserOrder(&view->browserOrder());
        view->setPaintBudget(60);
        scrollView.setClock([this] { return now; });
        scrollView.resize(600, 500);
        scrollView.show();
        view->setLeafGroupItemArray(tree->leaves());
        view->reloadData();
        QApplication::processEvents(); // the scroller appears
    }
    ~BrowserViewTest() override {
        services.buffer.setBrowserOrder(nullptr);
        view.reset();
    }

    QPoint at(PBImageBrowserIndex index) {
        return view->widgetRect(index).center() - QPoint(0, 30);
    }
    QPoint nameAt(PBImageBrowserIndex index) {
        const QRectF cell = view->widgetRect(index);
        return view->browserLayout().fileNameRectWithCellRect(cell).center().toPoint();
    }
    void send(QEvent::Type type, QPoint point, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        const bool isMove = type == QEvent::MouseMove;
        const bool isRelease = type == QEvent::MouseButtonRelease;
        QMouseEvent event(
            type, point, view->mapToGlobal(QPointF(point)), isMove ? Qt::NoButton : Qt::LeftButton,
            isRelease ? Qt::NoButton : Qt::LeftButton, modifiers);
        QApplication::sendEvent(view.get(), &event);
    }
    void click(QPoint point, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        send(QEvent::MouseButtonPress, point, modifiers);
        send(QEvent::MouseButtonRelease, point, modifiers);
    }
    void press(QWidget& widget, int key, const QString& text = {}) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(&widget, &event);
    }
    void finishMotion() {
        now += 1;
        scrollView.motion().tick();
    }
    void gesture(Qt::NativeGestureType type, double value) {
        const QPointF point(9, 9);
        QNativeGestureEvent event(
            type, QPointingDevice::primaryPointingDevice(), 2, point, point, point, value, {});
        QApplication::sendEvent(view.get(), &event);
    }
    QImage picture() {
        QImage image(view->size(), QImage::Format_RGB32);
        view->render(&image);
        return image;
    }
    /// The field in which a name is edited; nullptr if none is.
    PBModalTextField* nameField() const {
        for (auto* each : view->findChildren<PBModalTextField*>())
            if (!each->isHidden()) return each;
        return nullptr;
    }
    double position() const { return scrollView.pbScrollPoint().y(); }

    double now = 10;
    FakeServices services;
    PBImageBrowserScrollView scrollView{services};
    std::unique_ptr<BrowserTree> tree;
    std::unique_ptr<PBImageBrowserView> view;
};
