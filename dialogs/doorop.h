// The window that simulates the cooler door.
#pragma once

#include "linkaccess/clientborrower.h"

#include <QWidget>

#include <memory>

namespace Ui {
class DoorOp;
}

/// Each click sends one door command, whose outcome is not shown.
class DoorOp final : public QWidget, public ClientBorrower {
    Q_OBJECT

public:
    DoorOp(QWidget* parent, CameraSp* client);
    ~DoorOp() override;

private:
    std::unique_ptr<Ui::DoorOp> m_ui;
};
