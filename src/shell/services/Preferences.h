#pragma once

#include <QObject>
#include <QString>

namespace platform {
class UserDefaults;
}

/// What the user prefers, kept in the settings. What has changed is told at once; only the language
/// holds from the next start on. Main thread.
class Preferences final : public QObject {
    Q_OBJECT

public:
    /// What the wheel does on the picture of the large view; with Ctrl it does the other.
    enum class Wheel { Step, Zoom };
    /// What the picture of the large view lies on.
    enum class Ground { Grey, Black, White, Window };
    enum class Theme { Desktop, Light, Dark };

    /// Reads the settings; what is absent or of no use is the first of each. They outlive this
    /// object.
    explicit Preferences(platform::UserDefaults& defaults);

    [[nodiscard]] Wheel wheel() const { return _wheel; }
    void setWheel(Wheel wheel);
    [[nodiscard]] Ground ground() const { return _ground; }
    void setGround(Ground ground);
    [[nodiscard]] Theme theme() const { return _theme; }
    void setTheme(Theme theme);
    /// The name of a locale; empty for the desktop's.
    [[nodiscard]] QString language() const { return _language; }
    void setLanguage(const QString& language);

Q_SIGNALS:
    void wheelDidChange();
    void groundDidChange();
    void themeDidChange();

private:
    platform::UserDefaults& _defaults;
    Wheel _wheel;
    Ground _ground;
    Theme _theme;
    QString _language;
};
