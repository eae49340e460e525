#pragma once

#include "ui/DropTip.h"

/// Covers the browser while folders are dragged over it.
class PBImageBrowserDragTipView final : public DropTip {
    Q_OBJECT

public:
    explicit PBImageBrowserDragTipView(QWidget* parent)
        : DropTip(QStringLiteral("addFolder"), QStringLiteral("DropToAdd"), parent) {}
};
