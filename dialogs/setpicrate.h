// The window of the picture compression rate.
#pragma once

#include "dialogs/settingborrower.h"

#include <QWidget>

#include <memory>

namespace Ui {
class SetPicRate;
}

/// Writes the rate the user types and reads the present one.
/// User-interface thread; every camera command blocks for one exchange.
class SetPicRate final : public QWidget, public SettingBorrower {
    Q_OBJECT

public:
    /// The client stays the caller's and may be null.
    explicit SetPicRate(QWidget* parent, CameraSp* client);
    ~SetPicRate() override;

private:
    std::unique_ptr<Ui::SetPicRate> m_ui;
};
