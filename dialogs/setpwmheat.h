// The window of the heater wire's duty cycle.
#pragma once

#include "dialogs/settingborrower.h"

#include <QWidget>

#include <memory>

namespace Ui {
class SetPwmHeat;
}

/// Writes one of four duty cycles and reads the present one.
/// User-interface thread; every camera command blocks for one exchange.
class SetPwmHeat final : public QWidget, public SettingBorrower {
    Q_OBJECT

public:
    /// The client stays the caller's and may be null.
    explicit SetPwmHeat(QWidget* parent, CameraSp* client);
    ~SetPwmHeat() override;

private:
    std::unique_ptr<Ui::SetPwmHeat> m_ui;
};
