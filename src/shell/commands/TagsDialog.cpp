#include "shell/commands/TagsDialog.h"

#include "platform/program/HarmlessText.h"
#include "platform/program/LocalizedTexts.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

using platform::briefText;
using platform::localizedFormat;
using platform::localizedString;

namespace {

constexpr QSize firstSize(420, 460);
/// Of the count, as a number.
constexpr int countRole = Qt::UserRole;
/// The least width of the list of tags to merge into, in characters.
constexpr int charactersOfChoice = 30;
/// Characters of a tag in the list, which may be made wider.
constexpr qsizetype mostInList = 200;

/// Deletes itself when it is closed.
QInputDialog* makeQuestion(const QString& text, QWidget* parent) {
    auto* question = new QInputDialog(parent);
    question->setWindowTitle(localizedString(u"TagsTitle"));
    question->setLabelText(text);
    for (QLabel* label : question->findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
    question->setAttribute(Qt::WA_DeleteOnClose);
    return question;
}

} // namespace

TagsDialog::TagsDialog(QWidget* window)
    : QDialog(window), _find(new QLineEdit), _list(new QTreeWidget),
      _rename(new QPushButton(localizedString(u"TagsRename"))),
      _merge(new QPushButton(localizedString(u"TagsMerge"))),
      _remove(new QPushButton(localizedString(u"TagsRemove"))) {
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("tagsDialog"));
    setWindowTitle(localizedString(u"TagsTitle"));
    resize(firstSize);
    _find->setPlaceholderText(localizedString(u"TagsFind"));
    _find->setAccessibleName(localizedString(u"TagsFind"));
    _find->setClearButtonEnabled(true);
    _list->setObjectName(QStringLiteral("tags"));
    _list->setRootIsDecorated(false);
    _list->setUniformRowHeights(true);
    _list->setAccessibleName(localizedString(u"TagsTitle"));
    _list->setHeaderLabels(
        {localizedString(u"TagsColumnTag"), localizedString(u"TagsColumnCount")});
    _list->header()->setStretchLastSection(false);
    _list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    _list->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(_find);
    layout->addWidget(_list, 1);
    auto* row = new QHBoxLayout;
    for (QPushButton* button : {_rename, _merge, _remove}) {
        button->setAutoDefault(false);
        row->addWidget(button);
    }
    row->addStretch(1);
    auto* close = new QDialogButtonBox(QDialogButtonBox::Close);
    row->addWidget(close);
    layout->addLayout(row);

    connect(close, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(_find, &QLineEdit::textChanged, this, &TagsDialog::refill);
    connect(_list, &QTreeWidget::currentItemChanged, this, &TagsDialog::updateButtons);
    connect(_list, &QTreeWidget::itemActivated, this, &TagsDialog::askForName);
    connect(_rename, &QPushButton::clicked, this, &TagsDialog::askForName);
    connect(_merge, &QPushButton::clicked, this, &TagsDialog::askForOther);
    connect(_remove, &QPushButton::clicked, this, [this] {
        const QTreeWidgetItem* current = _list->currentItem();
        if (current) Q_EMIT removeRequested(currentTag(), current->data(1, countRole).toLongLong());
    });
    updateButtons();
}

void TagsDialog::setTags(std::vector<marks::TagRows::Count> tags) {
    _tags = std::move(tags);
    refill();
    if (!_tags.empty()) return;
    auto* none = new QTreeWidgetItem(_list, {localizedString(u"TagsNone")});
    none->setFlags(Qt::NoItemFlags);
    none->setFirstColumnSpanned(true);
}

QString TagsDialog::currentTag() const {
    const QTreeWidgetItem* row = _list->currentItem();
    return row ? row->data(0, countRole).toString() : QString();
}

void TagsDialog::refill() {
    const QString current = currentTag();
    _list->clear();
    for (const auto& [tag, photographs] : _tags) {
        if (!tag.contains(_find->text(), Qt::CaseInsensitive)) continue;
        auto* row = new QTreeWidgetItem(
            _list,
            {platform::harmlessText(briefText(tag, mostInList)), QLocale().toString(photographs)});
        row->setData(0, countRole, tag);
        row->setData(1, countRole, photographs);
        row->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
        if (tag == current) _list->setCurrentItem(row);
    }
    if (!_list->currentItem()) _list->setCurrentItem(_list->topLevelItem(0));
    updateButtons();
}

void TagsDialog::updateButtons() {
    const bool hasTag = _list->currentItem() != nullptr;
    _rename->setEnabled(hasTag);
    _remove->setEnabled(hasTag);
    _merge->setEnabled(hasTag && _tags.size() > 1);
}

void TagsDialog::askForName() {
    const QString tag = currentTag();
    if (tag.isEmpty()) return;
    QInputDialog* question = makeQuestion(localizedFormat(u"TagsNewName", {briefText(tag)}), this);
    question->setTextValue(tag);
    connect(question, &QInputDialog::textValueSelected, this, [this, tag](const QString& name) {
        Q_EMIT renameRequested(tag, name);
    });
    question->open();
}

void TagsDialog::askForOther() {
    const QString tag = currentTag();
    if (tag.isEmpty()) return;
    QStringList others;
    for (const auto& known : _tags)
        if (known.tag != tag) others.append(known.tag);
    QInputDialog* question =
        makeQuestion(localizedFormat(u"TagsMergeInto", {briefText(tag)}), this);
    question->setComboBoxItems(others);
    // A tag may be longer than any screen is wide.
    auto* choice = question->findChild<QComboBox*>();
    choice->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    choice->setMinimumContentsLength(charactersOfChoice);
    connect(question, &QInputDialog::textValueSelected, this, [this, tag](const QString& other) {
        Q_EMIT renameRequested(tag, other);
    });
    question->open();
}
