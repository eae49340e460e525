#pragma once

#include "library/PBAliasObject.h"
#include "scan/ScanFactory.h"

#include <QString>

#include <functional>
#include <memory>

class PBGroupTreeDataSource;
class ScanPipeline;

namespace platform {
class OperationQueue;
}

/// The scan control loop: stops everything and starts the display anew for the present selection.
/// Nothing here waits: a cancelled operation ends when it next looks, and the serial queues see to
/// it that the next one starts after it. Main thread.
class ScanControl {
public:
    /// What is selected in the sidebar.
    struct Selection {
        /// nullptr when no folder is selected, or it lies in no root.
        std::shared_ptr<PBAliasObject> root;
        QString relativePath;
    };
    /// The queues and the pipeline outlive this object.
    struct Environment {
        platform::OperationQueue& preload;
        platform::OperationQueue& scan;
        platform::OperationQueue& build;
        ScanPipeline& pipeline;
        std::function<Selection()> selection;
        std::function<ScanBrowsing()> browsing;
        /// Drops what the display has in memory of the former folder.
        std::function<void()> clearDisplay;
        /// The display should say anew why it is empty.
        std::function<void()> stateChanged;
    };

    explicit ScanControl(Environment environment);

    void scan();
    void cancelScan();
    void scanFinished();
    [[nodiscard]] bool isScanning() const { return _isScanning; }

private:
    const Environment _environment;
    bool _isScanning = false;
};
