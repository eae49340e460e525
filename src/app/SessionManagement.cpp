#include "app/SessionManagement.h"

#include "shell/PBMainWindowController.h"

#include <QGuiApplication>
#include <QSessionManager>

SessionManagement::SessionManagement(
    const CommandLineOptions& options, PBMainWindowController& window) {
    const QStringList again =
        QStringList{QCoreApplication::applicationFilePath()} + restartArguments(options);
    // A run that ends by itself is not for another session.
    const auto hint =
        options.untilIdle ? QSessionManager::RestartNever : QSessionManager::RestartIfRunning;
    const auto answer = [&window, again, hint](QSessionManager& manager) {
        window.saveSession();
        manager.setRestartHint(hint);
        manager.setRestartCommand(again + window.openedOnShow());
    };
    // The manager wants its answers before the signal's end.
    connect(qGuiApp, &QGuiApplication::saveStateRequest, this, answer, Qt::DirectConnection);
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, answer, Qt::DirectConnection);
}
