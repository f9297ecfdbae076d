// Writing a setting and the countdown after it.
#pragma once

#include "link/clock.h"
#include "linkaccess/signs.h"

#include <QObject>
#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

class QAbstractButton;
class QLabel;
class QProgressBar;
class QTimer;

/// One write of a setting with everything the user sees of it: the controls are held, the hint tells of the
/// write with a sign before it, a countdown with a bar gives the camera time to store the value, and then the
/// value is read back.
///
///     idle --run, write accepted--> counting down --last tick--> idle
///
/// The countdown never asks the camera: its success means that the write was accepted. User-interface thread.
class SettingWrite final : public QObject {
    Q_OBJECT

public:
    struct Plan {
        QLabel* hint;
        std::vector<QWidget*> controls;            ///< disabled from the press until failure or success
        QAbstractButton* readBack;                 ///< clicked after success
        int seconds;                               ///< shown by the first tick
        QString emptyValue;                        ///< hint for an empty value
        QString started;                           ///< hint after the write, followed by the value
        QString countdown;                         ///< hint of a tick: %1 the number, %2 its unit
        QString failed;                            ///< hint after a failed write
        const char* resultTag;                     ///< of the line on standard output
        std::function<QString()> value;            ///< what is to be written
        std::function<bool(const QString&)> write; ///< one exchange; true when the camera accepted the value
    };

    /// The window becomes the parent; the plan's widgets are its children.
    SettingWrite(QWidget* window, const Clock& clock, Plan plan);

    /// What the set button does.
    void run();

private:
    void tick();
    void tell(Sign sign, const QString& hint);
    void setControlsEnabled(bool enabled);

    QWidget* m_window;
    Plan m_plan;
    SignMark* m_mark;    ///< before the hint
    QProgressBar* m_bar; ///< behind it, seconds that are left
    QTimer* m_timer;
    int m_counter;
};
