// The window that shows how the camera is mounted.
#pragma once

#include "dialogs/settingborrower.h"

#include <QWidget>

#include <memory>
#include <vector>

class QTimer;
namespace Ui {
class SetCameraLocation;
}

/// Shows the raw pitch, roll, yaw and acceleration of the motion sensor. Reads them on the pool, during
/// construction and by the refresh button.
class SetCameraLocation final : public QWidget, public SettingBorrower {
    Q_OBJECT

public:
    /// Starts the reading; with a null client nothing is read and the labels stay. The client stays the
    /// caller's.
    explicit SetCameraLocation(QWidget* parent, CameraSp* client);
    ~SetCameraLocation() override;

private:
    void clientChanged() override;
    void refresh();
    void fetch();
    void showQuantities(const std::vector<Value>& values);

    std::unique_ptr<Ui::SetCameraLocation> m_ui;
    bool m_read = false;
    QTimer* m_timer;    // like the other windows' countdown, but never started here:
    int m_counter = 10; // nothing is written
};
