#include "app/ScanControl.h"

#include "app/ScanPipeline.h"
#include "platform/tasks/MainThread.h"
#include "platform/tasks/OperationQueue.h"

ScanControl::ScanControl(Environment environment) : _environment(std::move(environment)) {}

void ScanControl::scan() {
    platform::assertMainThread();
    cancelScan();
    PBGroupTreeDataSource& trees = _environment.pipeline.groupTreeDataSource();
    trees.setGroupItemArray({});
    trees.setGroupItemArray_work(nullptr);
    trees.setIsOutlineViewScrolled(false);
    _environment.clearDisplay();
    _isScanning = false;

    Selection selection = _environment.selection();
    if (selection.root && selection.root->isMounted()) {
        auto work = std::make_shared<PBGroupItemArray>();
        trees.setGroupItemArray_work(work);
        _isScanning = true;
        _environment.pipeline.factory().startScan(
            std::move(selection.root), selection.relativePath, std::move(work),
            _environment.browsing());
    }
    _environment.stateChanged();
}

void ScanControl::cancelScan() {
    platform::assertMainThread();
    for (platform::OperationQueue* queue :
         {&_environment.preload, &_environment.scan, &_environment.build}) {
        queue->setSuspended(false);
        queue->cancelAllOperations();
    }
    _environment.pipeline.groupTreeDataSource().cancelDelayedPublications();
}

void ScanControl::scanFinished() {
    platform::assertMainThread();
    _isScanning = false;
    _environment.stateChanged();
}
