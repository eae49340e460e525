#pragma once

#include "ui/PBThemes.h"

#include <QDBusVariant>
#include <QObject>

/// What the desktop prefers, light or dark, from the settings portal; light where there is none.
/// Main thread.
class ColorScheme : public QObject {
    Q_OBJECT

public:
    explicit ColorScheme(QObject* parent = nullptr);

    /// Asked once, with a bounded wait (a tenth of a second at most).
    [[nodiscard]] PBThemes::Scheme preferred() const { return _preferred; }

Q_SIGNALS:
    void preferredChanged(PBThemes::Scheme scheme);

private:
    Q_SLOT void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);
    static PBThemes::Scheme schemeOf(const QVariant& value);

    PBThemes::Scheme _preferred = PBThemes::Scheme::Light;
};
