#include "shell/preferences/PreferencesDialog.h"

#include "core/Texts.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/program/TextLanguages.h"
#include "shell/services/Preferences.h"
#include "shell/services/ThumbnailCache.h"
#include "ui/WindowAlert.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPointer>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <chrono>
#include <utility>

using platform::localizedFormat;
using platform::localizedString;

namespace {

/// Thumbnails are made while the window is open.
constexpr std::chrono::milliseconds refreshInterval{1000};
constexpr int margin = 20;
constexpr int rowSpacing = 10;

/// As its speakers write it, in capitals as at the beginning of a line.
QString nameOfLanguage(const QString& language) {
    const QLocale locale(language);
    // English would name itself by its country.
    const QString name = locale.language() == QLocale::English ? QStringLiteral("English")
                                                               : locale.nativeLanguageName();
    return name.left(1).toUpper() + name.mid(1);
}

template <typename Choice>
int numberOf(Choice choice) {
    return static_cast<int>(choice);
}

} // namespace

PreferencesDialog::PreferencesDialog(
    Preferences& preferences, const ThumbnailCache& cache, QWidget& window)
    : QDialog(&window), _preferences(preferences), _cache(cache) {
    setWindowTitle(localizedString(u"PreferencesTitle"));
    auto* form = new QFormLayout;
    form->setVerticalSpacing(rowSpacing);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    QComboBox* first = addChoice(
        *form, u"PreferTheme", {u"ThemeDesktop", u"ThemeLight", u"ThemeDark"},
        numberOf(preferences.theme()),
        [this](int index) { _preferences.setTheme(static_cast<Preferences::Theme>(index)); });
    addLanguages(*form);
    addChoice(
        *form, u"PreferWheel", {u"WheelSteps", u"WheelZooms"}, numberOf(preferences.wheel()),
        [this](int index) { _preferences.setWheel(static_cast<Preferences::Wheel>(index)); });
    addChoice(
        *form, u"PreferGround", {u"GroundGrey", u"GroundBlack", u"GroundWhite", u"GroundWindow"},
        numberOf(preferences.ground()),
        [this](int index) { _preferences.setGround(static_cast<Preferences::Ground>(index)); });
    addThumbnails(*form);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(margin);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addLayout(form);
    layout->addWidget(buttons);
    first->setFocus();
}

QComboBox* PreferencesDialog::addChoice(
    QFormLayout& form, QStringView title, std::initializer_list<QStringView> texts, int current,
    std::function<void(int)> chosen) {
    auto* box = new QComboBox;
    box->setObjectName(title.toString());
    for (const QStringView text : texts)
        box->addItem(localizedString(text));
    box->setCurrentIndex(current);
    connect(box, &QComboBox::currentIndexChanged, this, std::move(chosen));
    form.addRow(localizedString(title), box);
    return box;
}

void PreferencesDialog::addLanguages(QFormLayout& form) {
    const QStringList languages = platform::LocalizedTexts::languages();
    QComboBox* box =
        addChoice(form, u"PreferLanguage", {u"LanguageDesktop"}, 0, [this, languages](int index) {
            _preferences.setLanguage(index > 0 ? languages.at(index - 1) : QString());
            _languageHint->show();
        });
    {
        const QSignalBlocker isSetUp(box);
        for (const QString& language : languages)
            box->addItem(nameOfLanguage(language));
        box->setCurrentIndex(static_cast<int>(languages.indexOf(_preferences.language())) + 1);
    }
    _languageHint = new QLabel(localizedString(u"LanguageHint"));
    _languageHint->hide();
    box->setAccessibleDescription(_languageHint->text());
    form.addRow(QString(), _languageHint);
}

void PreferencesDialog::addThumbnails(QFormLayout& form) {
    _byteCount = new QLabel;
    _clear = new QPushButton(localizedString(u"ClearThumbnails"));
    _clear->setAutoDefault(false);
    connect(_clear, &QPushButton::clicked, this, [this] { askToClear(); });
    auto* row = new QHBoxLayout;
    row->addWidget(_byteCount, 1);
    row->addWidget(_clear);
    form.addRow(localizedString(u"PreferThumbnails"), row);
    showByteCount();
    connect(&_refresh, &QTimer::timeout, this, [this] { showByteCount(); });
    _refresh.start(refreshInterval);
}

void PreferencesDialog::askToClear() {
    askInWindow(
        *this,
        {.message = localizedString(u"AskClearThumbnails"),
         .details = localizedString(u"AskClearThumbnailsDetails"),
         .consent = localizedString(u"ClearThumbnailsConsent"),
         .other = {}},
        [this](WindowAnswer answer) {
            if (answer == WindowAnswer::Consent) clear();
        });
}

void PreferencesDialog::clear() {
    _clear->setEnabled(false);
    _cache.clear([self = QPointer(this)](bool isCleared) {
        if (!self) return;
        self->_clear->setEnabled(true);
        self->showByteCount();
        if (isCleared) return;
        showWindowAlert(
            *self, localizedString(u"CantClearThumbnails"),
            localizedString(u"CantClearThumbnailsDetails"));
    });
}

void PreferencesDialog::showByteCount() {
    const QString size = PBUtilities::stringWithFileSize(static_cast<quint64>(_cache.byteCount()));
    _byteCount->setText(localizedFormat(u"ThumbnailsByteCount", {size}));
    _clear->setAccessibleDescription(_byteCount->text());
}
