#pragma once

#include "support/Support.h"

#include <QJsonObject>
#include <QRect>

namespace e2e {

/// An image on show in the browser.
struct Item {
    QString name;
    QRect picture; ///< what a click takes hold of
    QRect label;   ///< the row of the file name
    bool hasThumbnail = false;
    QString marks; ///< the stars, and a plus for a flag
};

/// A row of a list, an entry of a menu, a step of the breadcrumb.
struct Place {
    QString text;
    QRect rect;
};

/// Values of the state by their paths, such as {{"large.image", "a.jpg"}, {"large.count", 3}}.
using Values = std::vector<std::pair<QString, QJsonValue>>;

/// A place on the screen, as the state tells it.
[[nodiscard]] QRect rectOf(const QJsonValue& value);

/// What the program showed when it was asked; rectangles are those of the screen.
class State {
public:
    State() = default;
    explicit State(QJsonObject json) : _json(std::move(json)) {}

    /// The answer as it is, for whatever has no name here.
    [[nodiscard]] const QJsonObject& json() const { return _json; }
    [[nodiscard]] bool isEmpty() const { return _json.isEmpty(); }
    /// The value at a path; undefined where there is none.
    [[nodiscard]] QJsonValue value(const QString& path) const;
    [[nodiscard]] bool has(const Values& values) const;
    /// A value of the browser, such as "scroll" or "columns".
    [[nodiscard]] QJsonValue browser(const QString& name) const {
        return value(u"browser."_s + name);
    }
    /// A value of the large view, such as "image" or "percent"; undefined while it isn't shown.
    [[nodiscard]] QJsonValue large(const QString& name) const { return value(u"large."_s + name); }
    [[nodiscard]] double scroll() const { return browser(u"scroll"_s).toDouble(); }
    /// Nothing moves and nothing is worked on.
    [[nodiscard]] bool isAtRest() const;
    /// The browser has images on show, all with their thumbnails.
    [[nodiscard]] bool hasAllThumbnails() const;
    /// A photograph is shown large and sharp, and nothing moves.
    [[nodiscard]] bool isSharp() const;

    /// The names of the selected images with a blank between them, in the order of the sheet.
    [[nodiscard]] QString selected() const {
        return browser(u"selected"_s).toVariant().toStringList().join(u' ');
    }
    /// The images on show, in the order of the sheet.
    [[nodiscard]] QList<Item> items() const;
    /// The image on show with that name; one with empty rectangles if there is none.
    [[nodiscard]] Item item(const QString& name) const;

    /// What has that class or object name, or shows that text: a button, a field, a list, a menu.
    [[nodiscard]] std::optional<QJsonObject> control(const QString& name) const;
    /// The entries of menus that are open, rows of lists and steps of the breadcrumb; those of
    /// controls of that class or name only, such as "QMenu", if one is given.
    [[nodiscard]] QList<Place> places(const QString& within = {}) const;
    /// Where such a place, or else a control, is; null without one.
    [[nodiscard]] QRect place(const QString& text, const QString& within = {}) const;
    /// The push button with that text in the sheet that has the keys, which stands where it will;
    /// null without one.
    [[nodiscard]] QRect button(const QString& text) const;
    /// A chooser of files has the keys, or its list of completions.
    [[nodiscard]] bool isChoosingFile() const;
    /// The panes of a split view; one that is hidden has no size.
    [[nodiscard]] QList<QRect> panes(const QString& splitView) const;
    /// The inside of the main window.
    [[nodiscard]] QRect window() const { return rectOf(mainWindow()[u"rect"_s]); }
    /// Its number, for `Desktop::resize`, among others.
    [[nodiscard]] QJsonValue mainWindow() const;

    friend void PrintTo(const State& state, std::ostream* stream);

private:
    /// The window that has the keys.
    [[nodiscard]] QJsonValue active() const;

    QJsonObject _json;
};

} // namespace e2e
