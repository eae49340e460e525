#pragma once

class QMessageBox;
class QString;

/// Makes the box one that tells of the catalogue's files before there is a window: plain text, and
/// a button to quit, which Escape stands for. Main thread.
void setUpCatalogueBox(QMessageBox& box, const QString& text, const QString& details);
