#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

/// What the window showed, for the next start: a value, and its file. What the settings keep (the
/// chain, the order, the sizes of the panes) is not in it.
struct SessionState {
    /// As another run finds a photograph again: by its id, where the catalogue is the same, else by
    /// its path.
    struct Photograph {
        qint64 fileId = 0; ///< 0: none
        QString path;      ///< may be empty where there are many
        [[nodiscard]] bool operator==(const Photograph&) const = default;
    };

    QString folder;       ///< that was selected, absolute; empty: none
    qint64 catalogue = 0; ///< the number that tells catalogues apart, which ids belong to
    bool isLargeView = false;
    bool isListSelected = false; ///< the large view goes through photographs that were selected
    /// Of the browser, in the order of the sheet; or of the large view's list, if that is of
    /// selected photographs.
    std::vector<Photograph> selected;
    Photograph current;      ///< of the browser; or what the large view shows
    Photograph anchor;       ///< lies at its place in the browser
    double anchorOffset = 0; ///< from the anchor's middle down to that of what is visible, points
    /// The run has ended in good order since.
    bool hasEnded = false;
    /// So many runs in a row have not, with this photograph shown large.
    int crashes = 0;

    [[nodiscard]] bool operator==(const SessionState&) const = default;

    [[nodiscard]] QByteArray toJson() const;
    /// Nothing for what is no such text.
    [[nodiscard]] static std::optional<SessionState> fromJson(const QByteArray& text);

    /// Nothing without a file that can be read as one.
    [[nodiscard]] static std::optional<SessionState> read(const QString& file);
    /// In one step: a program that ends in the midst leaves the former one. Doesn't wait for the
    /// disk.
    bool write(const QString& file) const;
};
