#pragma once

#include "core/PBGroupTypeArray.h"

#include <QObject>

#include <functional>

class PBGeoManager;

/// Observes the places that are found, and has the photographs that wait for theirs regrouped where
/// the chain groups by place: once for all places of half a second. Main thread.
class PlaceRegrouping final : public QObject {
    Q_OBJECT

public:
    struct Environment {
        std::function<PBGroupTypeArray()> groupTypeArray;
        std::function<void()> regroup;
    };

    /// The manager outlives this object.
    PlaceRegrouping(PBGeoManager& manager, Environment environment, QObject* parent = nullptr);
    ~PlaceRegrouping() override;

    /// Places were found whose photographs are not regrouped yet.
    [[nodiscard]] bool isPending() const { return _isPending; }

private:
    void reverseGeoFinished();
    void regroup();

    const Environment _environment;
    bool _isPending = false;
};
