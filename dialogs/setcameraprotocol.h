// The window for the camera type and the slave address.
#pragma once

#include <QWidget>

#include <cstdint>
#include <memory>

class HexSpinBox;

namespace Ui {
class SetCameraProtocol;
}

/// Edits two values of its owner and talks to no camera. The owner applies them when the window is destroyed,
/// confirmed or not.
class SetCameraProtocol final : public QWidget {
    Q_OBJECT

public:
    /// Both values must outlive the window; they are written on confirmation only.
    SetCameraProtocol(std::uint32_t* slaveAddress, std::uint32_t* cameraType, QWidget* parent = nullptr);
    ~SetCameraProtocol() override;

private:
    void addAddressField();
    void arrangeTypes();
    void selectType();
    void confirm();
    void focusAddress();
    [[nodiscard]] HexSpinBox* addressField() const;

    std::unique_ptr<Ui::SetCameraProtocol> m_ui;
    std::uint32_t* m_slaveAddress;
    std::uint32_t* m_cameraType;
};
