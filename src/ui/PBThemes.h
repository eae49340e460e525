#pragma once

#include <QColor>
#include <QPalette>

/// The colours of the window, in a light and a dark set. Main thread.
class PBThemes {
public:
    enum class Scheme { Light, Dark };

    /// Colours that the palette has no role for.
    struct Colors {
        QColor sidebar;       ///< background of the sidebar and the group panel
        QColor browser;       ///< background behind the photographs
        QColor bar;           ///< header and status bars
        QColor separator;     ///< hair lines between panes and bars
        QColor text;          ///< names and values
        QColor secondaryText; ///< labels, counts, hints; at least 4.5 to 1 on each ground here
        QColor icon;          ///< symbols at rest
        QColor accent;        ///< symbols that are on, selection
        QColor flag;          ///< the flag of flagged photographs
        QColor star;          ///< the stars of a rating
        QColor sheet;         ///< behind thumbnails, which lie on white
        QColor groupHead;     ///< heads of groups on the sheet
        QColor shadow;        ///< of thumbnails
        QColor placeholder;   ///< frames of thumbnails that are not there yet
        QColor dimSelection;  ///< selection in a view that hasn't the keyboard
    };

    /// How much of its strength text has in a window that isn't the active one, which steps back:
    /// that can still be read as above.
    static constexpr float inactiveStrength = 0.92F;

    [[nodiscard]] static Scheme scheme();
    [[nodiscard]] static const Colors& colors();

    [[nodiscard]] static QColor imageBrowserBackgroundColor() { return colors().sheet; }
    [[nodiscard]] static QColor imageBrowserShadowColor() { return colors().shadow; }
    /// Dim when the browser isn't the one that the keyboard goes to.
    [[nodiscard]] static QColor imageBrowserSelectColor(bool isFirstResponder) {
        return isFirstResponder ? colors().accent : colors().dimSelection;
    }

    /// Takes the scheme into use: style, palette and the colours above. Widgets hear of it by
    /// `QEvent::PaletteChange`.
    static void apply(Scheme scheme);

    [[nodiscard]] static QPalette palette(Scheme scheme);
};
