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

bool hasText(const QJsonObject& object, const QString& text) {
    return object[QStringLiteral("text")].toString() == text;
}

bool isCalled(const QJsonObject& object, const QString& name) {
    return object[QStringLiteral("class")].toString() == name ||
           object[QStringLiteral("name")].toString() == name;
}

bool isMain(const QJsonValue& window) {
    return window[QStringLiteral("class")].toString().contains(u"Window");
}

} // namespace

QRect rectOf(const QJsonObject& object) {
    return rectOf(object[QStringLiteral("rect")]);
}

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
    return _json[QStringLiteral("idle")].toBool() && !_json[QStringLiteral("animating")].toBool() &&
           !browser(QStringLiteral("scrolling")).toBool();
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
        if (isCalled(control, name) || hasText(control, name)) return control;
    }
    return std::nullopt;
}

QList<Place> State::places(const QString& within) const {
    QList<Place> all;
    for (const QJsonValue& control : _json[QStringLiteral("controls")].toArray()) {
        if (!within.isEmpty() && !isCalled(control.toObject(), within)) continue;
        for (const QString& part : {QStringLiteral("entries"), QStringLiteral("rows")}) {
            for (const QJsonValue& value : control[part].toArray()) {
                all.append(
                    {value[QStringLiteral("text")].toString(), rectOf(value.toObject()),
                     value[QStringLiteral("enabled")].toBool(),
                     value[QStringLiteral("checked")].toBool()});
            }
        }
    }
    return all;
}

QStringList State::texts(const QString& within) const {
    QStringList all;
    for (const Place& place : places(within))
        all += place.text;
    return all;
}

QRect State::place(const QString& text, const QString& within) const {
    for (const Place& place : places(within))
        if (place.text == text) return place.rect;
    const auto found = within.isEmpty() ? control(text) : std::nullopt;
    return found ? rectOf(*found) : QRect();
}

QList<QRect> State::panes(const QString& splitView) const {
    QList<QRect> all;
    for (const QJsonValue& pane : _json[QStringLiteral("splits")][splitView].toArray())
        all += rectOf(pane);
    return all;
}

QRect State::window() const {
    for (const QJsonValue& window : _json[QStringLiteral("windows")].toArray())
        if (isMain(window)) return rectOf(window.toObject());
    return {};
}

qint64 State::topWindow() const {
    qint64 top = 0;
    for (const QJsonValue& window : _json[QStringLiteral("windows")].toArray()) {
        const bool isAbove = window[QStringLiteral("modal")].toBool();
        if (isAbove || (isMain(window) && top == 0)) top = window[QStringLiteral("id")].toInteger();
    }
    return top;
}

void PrintTo(const State& state, std::ostream* stream) {
    *stream << QJsonDocument(state.json()).toJson(QJsonDocument::Compact).toStdString();
}

} // namespace e2e
