#pragma once

#include "fileactions/marks/PhotographEdit.h"

#include <QObject>

class BrowserPane;
class NoticeBar;
class PBAppDelegate;
class StatusNews;

namespace fileactions {
class EditRunner;
}

/// Shows in the window what has become of edits: the browser paints them, the status bar tells what
/// was left out, the bar of notices what could not be stored or read back. Main thread.
class EditNews final : public QObject {
    Q_OBJECT

public:
    /// The parts outlive this object.
    struct Parts {
        fileactions::EditRunner& edits;
        BrowserPane& browserPane;
        const StatusNews& statusNews;
        NoticeBar& noticeBar;
        PBAppDelegate& delegate;
    };
    explicit EditNews(const Parts& parts, QObject* parent = nullptr);

private:
    void tell(const fileactions::EditResult& result);
    void tellFailure(const fileactions::EditResult& result);
    void tellUnread(const QString& reason);

    const Parts _parts;
};
