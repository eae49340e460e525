#include "e2e/State.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace e2e {

namespace {

QRect rectOf(const QJsonValue& value) {
    const QJsonArray numbers = value.toArray();
    return {
        numbers.at(0).toInt(), numbers.at(1).toInt(), numbers.at(2).toInt(), numbers.at(3).toInt()};
}

QRect rectOf(const QJsonObject& object) {
    return rectOf(object[QStringLiteral("rect")]);
}

bool hasText(const QJsonObject& object, const QString& text) {
    return object[QStringLiteral("text")].toString() == text;
}

} // namespace

QJsonValue State::browser(const QString& name) const {
    return _json[QStringLiteral("browser")].toObject()[name];
}

QRect State::browserRect() const {
    return rectOf(browser(QStringLiteral("rect")));
}

double State::scroll() const {
    return browser(QStringLiteral("scroll")).toDouble();
}

bool State::isAtRest() const {
    return _json[QStringLiteral("idle")].toBool() && !browser(QStringLiteral("scrolling")).toBool();
}

QString State::selected() const {
    return browser(QStringLiteral("selected")).toVariant().toStringList().join(u' ');
}

QList<Item> State::items() const {
    QList<Item> all;
    for (const QJsonValue& group : browser(QStringLiteral("groups")).toArray()) {
        for (const QJsonValue& value : group[QStringLiteral("items")].toArray()) {
            all.append(
                {value[QStringLiteral("name")].toString(), rectOf(value[QStringLiteral("rect")]),
                 rectOf(value[QStringLiteral("picture")]), rectOf(value[QStringLiteral("label")]),
                 value[QStringLiteral("selected")].toBool(),
                 value[QStringLiteral("thumbnail")].toBool()});
        }
    }
    return all;
}

Item State::item(const QString& name) const {
    for (const Item& item : items())
        if (item.name == name) return item;
    return {};
}

std::optional<QJsonObject> State::control(const QString& name) const {
    for (const QJsonValue& value : _json[QStringLiteral("controls")].toArray()) {
        const QJsonObject control = value.toObject();
        if (control[QStringLiteral("class")].toString() == name ||
            control[QStringLiteral("name")].toString() == name || hasText(control, name))
            return control;
    }
    return std::nullopt;
}

QRect State::place(const QString& text) const {
    const QJsonArray controls = _json[QStringLiteral("controls")].toArray();
    for (const QJsonValue& control : controls) {
        for (const QString& part : {QStringLiteral("entries"), QStringLiteral("rows")}) {
            for (const QJsonValue& value : control[part].toArray())
                if (hasText(value.toObject(), text)) return rectOf(value.toObject());
        }
    }
    const auto found = control(text);
    return found ? rectOf(*found) : QRect();
}

qint64 State::topWindow() const {
    qint64 top = 0;
    for (const QJsonValue& window : _json[QStringLiteral("windows")].toArray()) {
        const bool isAbove = window[QStringLiteral("modal")].toBool();
        const bool isMain = window[QStringLiteral("class")].toString().contains(u"Window");
        if (isAbove || (isMain && top == 0)) top = window[QStringLiteral("id")].toInteger();
    }
    return top;
}

void PrintTo(const State& state, std::ostream* stream) {
    *stream << QJsonDocument(state.json()).toJson(QJsonDocument::Compact).toStdString();
}

} // namespace e2e
