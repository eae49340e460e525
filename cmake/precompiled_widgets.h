#pragma once

#include "precompiled_gui.h"

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QPainter>
#include <QSplitter>
#include <QWidget>
