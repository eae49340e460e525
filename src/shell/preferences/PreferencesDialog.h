#pragma once

#include <QDialog>
#include <QStringView>
#include <QTimer>

#include <functional>
#include <initializer_list>

class Preferences;
class QComboBox;
class QFormLayout;
class QLabel;
class QPushButton;
struct ThumbnailCache;

/// The window of the preferences. What is chosen acts at once, and is kept. Main thread.
class PreferencesDialog final : public QDialog {
    Q_OBJECT

public:
    /// The preferences and the cache outlive the window.
    PreferencesDialog(Preferences& preferences, const ThumbnailCache& cache, QWidget& window);

private:
    /// A row with a choice among texts, by their keys; `chosen` gets the number of one.
    QComboBox* addChoice(
        QFormLayout& form, QStringView title, std::initializer_list<QStringView> texts, int current,
        std::function<void(int)> chosen);
    void addLanguages(QFormLayout& form);
    void addThumbnails(QFormLayout& form);
    void askToClear();
    void clear();
    void showByteCount();

    Preferences& _preferences;
    const ThumbnailCache& _cache;
    QLabel* _languageHint = nullptr;
    QLabel* _byteCount = nullptr;
    QPushButton* _clear = nullptr;
    QTimer _refresh;
};
