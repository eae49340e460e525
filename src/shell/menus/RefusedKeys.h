#pragma once

#include <QObject>
#include <QString>

#include <functional>

class MainMenu;
class QWidget;

/// Tells why nothing happened when the keys of a command were pressed that is not possible now, as
/// the tip of its entry would. Main thread.
class RefusedKeys final : public QObject {
    Q_OBJECT

public:
    using Tell = std::function<void(const QString& reason)>;

    /// The window and the menu outlive this object.
    RefusedKeys(QWidget& window, const MainMenu& menu, Tell tell, QObject* parent);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    const MainMenu& _menu;
    const Tell _tell;
};
