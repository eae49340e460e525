#pragma once

#include <QJsonObject>
#include <QRect>
#include <QStringList>

#include <optional>
#include <ostream>

namespace e2e {

/// An image on show in the browser.
struct Item {
    QString name;
    QRect cell;    ///< all of it
    QRect picture; ///< what a click takes hold of
    QRect label;   ///< the row of the file name
    bool isSelected = false;
    bool hasThumbnail = false;
};

/// What the program showed when it was asked; rectangles are those of the screen.
class State {
public:
    State() = default;
    explicit State(QJsonObject json) : _json(std::move(json)) {}

    /// The answer as it is, for whatever has no name here.
    [[nodiscard]] const QJsonObject& json() const { return _json; }
    [[nodiscard]] bool isEmpty() const { return _json.isEmpty(); }
    /// A value of the browser, such as "scroll" or "columns".
    [[nodiscard]] QJsonValue browser(const QString& name) const;
    [[nodiscard]] QRect browserRect() const;
    [[nodiscard]] double scroll() const;
    /// Nothing moves and nothing is worked on.
    [[nodiscard]] bool isAtRest() const;

    /// The names of the selected images with a blank between them, in the order of the sheet.
    [[nodiscard]] QString selected() const;
    /// The images on show, in the order of the sheet.
    [[nodiscard]] QList<Item> items() const;
    /// The image on show with that name; one with empty rectangles if there is none.
    [[nodiscard]] Item item(const QString& name) const;

    /// What has that class or object name, or shows that text: a button, a field, a list, a menu.
    [[nodiscard]] std::optional<QJsonObject> control(const QString& name) const;
    /// Where a control, an entry of a menu that is open, or a row of a list is; null without one.
    [[nodiscard]] QRect place(const QString& text) const;
    /// The main window's number for `Desktop::focus`, or that of the dialog or menu above it.
    [[nodiscard]] qint64 topWindow() const;

    friend void PrintTo(const State& state, std::ostream* stream);

private:
    QJsonObject _json;
};

} // namespace e2e
