// The window of the gyro's capture settings.
#pragma once

#include "dialogs/settingborrower.h"

#include <QWidget>

#include <memory>
#include <vector>

class QTimer;
namespace Ui {
class CaptureDegree;
}

/// Shows and sets the capture angles, the capture direction and the gyro switch. Reads run on the pool;
/// writes block for one exchange. The window does not show a write's result: it reads the setting half a
/// second later.
class SetCaptureDegree final : public QWidget, public SettingBorrower {
    Q_OBJECT

public:
    /// Starts a full refresh. The client stays the caller's and may be null.
    explicit SetCaptureDegree(QWidget* parent, CameraSp* client);
    ~SetCaptureDegree() override;

    /// Item codes: 1 angles, 2 direction, 4 gyro switch; 3 is read and logged only.
    static constexpr int anglesItem = 1;
    static constexpr int directionItem = 2;
    static constexpr int reserveItem = 3;
    static constexpr int gyroItem = 4;

    /// Fetches one item, or in a full refresh all four; returns at once.
    void doGetInfo(bool fullRefresh, int item);

private:
    void setAngles();
    void setDirection();
    void setGyro();
    void writeAndReadBack(protocol::PropertyId id, Value value, int item);
    void readBackLater(int item);

    void showItem(int item, const Value& value);
    void showAngles(const Value& value);
    void showDirection(const Value& value);
    void showGyro(const Value& value);

    std::unique_ptr<Ui::CaptureDegree> m_ui;
    QTimer* m_timer;    // like the other windows' countdown, but never started here:
    int m_counter = 10; // the read-back takes its place
};
