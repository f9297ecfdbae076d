// The window of the camera's serial number.
#pragma once

#include "linkaccess/clientborrower.h"

#include <QString>
#include <QWidget>

#include <memory>

namespace Ui {
class SetSN;
}

/// Generates a serial number, writes it to the camera and reads the camera's number back.
/// User-interface thread; every camera command blocks for one exchange.
class SetSN final : public QWidget, public ClientBorrower {
    Q_OBJECT

public:
    /// The client stays the caller's and may be null.
    explicit SetSN(QWidget* parent, CameraSp* client);
    ~SetSN() override;

    /// 16 lower-case hexadecimal digits.
    static QString serialNumberOf(const QString& seed);

private:
    void generate();
    void showCameraSn();

    std::unique_ptr<Ui::SetSN> m_ui;
};
