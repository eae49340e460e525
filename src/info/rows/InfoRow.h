#pragma once

#include <QString>

#include <vector>

/// One fact of the panel: a label, and below it a value. Made by pure functions, drawn by
/// `RowPainter`. A value.
struct InfoRow {
    enum class State {
        Value,     ///< the photographs have `text` in common
        Mixed,     ///< they differ
        Missing,   ///< none of them has it
        Gathering, ///< not all of them were read yet
    };

    QString key = {};   ///< the column of the catalogue, or one of the general page
    QString label = {}; ///< localised
    QString text =
        {}; ///< of `State::Value`; any length, with line breaks as they stand in the file
    State state = State::Value;
    /// A widget stands in the place of the value: beside the label, or below it.
    enum class Control { None, Beside, Below };
    Control control = Control::None;

    /// What stands below the label.
    [[nodiscard]] QString shownValue() const;

    bool operator==(const InfoRow&) const = default;
};

using InfoRows = std::vector<InfoRow>;
