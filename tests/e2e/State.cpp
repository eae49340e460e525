#include "e2e/State.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace e2e {

namespace {

bool isCalled(const QJsonObject& object, const QString& name) {
    return object[u"class"_s].toString() == name || object[u"name"_s].toString() == name;
}

} // namespace

QRect rectOf(const QJsonValue& value) {
    const QJsonArray numbers = value.toArray();
    return {
        numbers.at(0).toInt(), numbers.at(1).toInt(), numbers.at(2).toInt(), numbers.at(3).toInt()};
}

bool State::isAtRest() const {
    return _json[u"idle"_s].toBool() && !_json[u"animating"_s].toBool() &&
           !browser(u"scrolling"_s).toBool();
}

bool State::hasAllThumbnails() const {
    const QList<Item> all = items();
    return !all.isEmpty() && std::ranges::all_of(all, &Item::hasThumbnail);
}

bool State::isSharp() const {
    const QString painted = large(u"painted"_s).toString();
    return (painted == u"fitIn"_s || painted == u"original"_s) && isAtRest() &&
           has({{u"large.atRest"_s, true}, {u"large.strip.scrolling"_s, false}});
}

QJsonValue State::value(const QString& path) const {
    QJsonValue found = _json;
    for (const QString& name : path.split(u'.'))
        found = found[name];
    return found;
}

bool State::has(const Values& values) const {
    return !isEmpty() && std::ranges::all_of(values, [this](const auto& one) {
        return value(one.first) == one.second;
    });
}

QList<Item> State::items() const {
    QList<Item> all;
    for (const QJsonValue& group : browser(u"groups"_s).toArray()) {
        for (const QJsonValue& value : group[u"items"_s].toArray()) {
            all.append(
                {value[u"name"_s].toString(), rectOf(value[u"picture"_s]),
                 rectOf(value[u"label"_s]), value[u"thumbnail"_s].toBool(),
                 QString::number(value[u"stars"_s].toInt()) +
                     (value[u"flagged"_s].toBool() ? u"+"_s : QString())});
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
    for (const QJsonValue& value : _json[u"controls"_s].toArray()) {
        const QJsonObject control = value.toObject();
        if (isCalled(control, name) || control[u"text"_s].toString() == name) return control;
    }
    return std::nullopt;
}

QRect State::button(const QString& text) const {
    // One that has no keys yet isn't where the window manager will put it.
    const QJsonValue window = active()[u"id"_s];
    for (const QJsonValue& value : _json[u"controls"_s].toArray()) {
        if (isCalled(value.toObject(), u"QPushButton"_s) && value[u"text"_s].toString() == text &&
            value[u"window"_s] == window)
            return rectOf(value[u"rect"_s]);
    }
    return {};
}

QJsonValue State::active() const {
    for (const QJsonValue& window : _json[u"windows"_s].toArray())
        if (window[u"active"_s].toBool()) return window;
    return {};
}

bool State::isChoosingFile() const {
    const QString name = active()[u"class"_s].toString();
    return name == u"QFileDialog" || name == u"QListView";
}

QList<Place> State::places(const QString& within) const {
    QList<Place> all;
    for (const QJsonValue& control : _json[u"controls"_s].toArray()) {
        if (!within.isEmpty() && !isCalled(control.toObject(), within)) continue;
        for (const QString& part : {u"entries"_s, u"rows"_s}) {
            for (const QJsonValue& value : control[part].toArray())
                all.append({value[u"text"_s].toString(), rectOf(value[u"rect"_s])});
        }
    }
    return all;
}

QRect State::place(const QString& text, const QString& within) const {
    for (const Place& place : places(within))
        if (place.text == text) return place.rect;
    const auto found = within.isEmpty() ? control(text) : std::nullopt;
    return found ? rectOf((*found)[u"rect"_s]) : QRect();
}

QList<QRect> State::panes(const QString& splitView) const {
    QList<QRect> all;
    for (const QJsonValue& pane : _json[u"splits"_s][splitView].toArray())
        all += rectOf(pane);
    return all;
}

QJsonValue State::mainWindow() const {
    for (const QJsonValue& window : _json[u"windows"_s].toArray())
        if (window[u"class"_s].toString().contains(u"Window")) return window;
    return {};
}

void PrintTo(const State& state, std::ostream* stream) {
    *stream << QJsonDocument(state.json()).toJson(QJsonDocument::Compact).toStdString();
}

} // namespace e2e
