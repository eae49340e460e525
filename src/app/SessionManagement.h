#pragma once

#include "app/CommandLine.h"

#include <QObject>

class PBMainWindowController;

/// What the session manager of a desktop asks: that everything is stored before the session ends,
/// and what starts the program again. Main thread.
class SessionManagement final : public QObject {
    Q_OBJECT

public:
    /// The window outlives this object.
    SessionManagement(const CommandLineOptions& options, PBMainWindowController& window);
};
