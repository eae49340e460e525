#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QString>
#include <QStringList>

/// Tags as the ledger stores them: a JSON array of texts, in their order.
namespace marks {

[[nodiscard]] inline QString tagsText(const QStringList& tags) {
    return QString::fromUtf8(
        QJsonDocument(QJsonArray::fromStringList(tags)).toJson(QJsonDocument::Compact));
}

[[nodiscard]] inline QStringList tagsOf(const QString& text) {
    QStringList tags;
    if (text == QStringView(u"[]")) return tags; // of nearly all photographs
    for (const QJsonValue& tag : QJsonDocument::fromJson(text.toUtf8()).array())
        tags.append(tag.toString());
    return tags;
}

} // namespace marks
