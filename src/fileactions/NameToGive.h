#pragma once

#include <QString>

namespace fileactions {

/// What a typed name means for a file, and what the user should be asked before it gets it.
struct NameToGive {
    enum class Doubt {
        None,
        OtherType, ///< programs would take the file for one of another format
        NoType,    ///< nothing would tell its format
    };

    /// Without blanks around it, and with the former extension where none was typed. Empty where
    /// nothing was typed.
    QString name;
    Doubt doubt = Doubt::None;
    /// File managers, and this program, would not show it, whatever its type.
    bool isHidden = false;
    /// The same name with the former extension, for a doubt about the type.
    QString nameOfSameType;
};

/// An extension that no program knows, such as the end of “Trip 2019.05”, belongs to the name.
/// Any thread.
[[nodiscard]] NameToGive nameToGive(const QString& typed, const QString& formerName);

} // namespace fileactions
