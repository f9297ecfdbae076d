// A number field that shows and takes hexadecimal digits.
#pragma once

#include <QSpinBox>

/// Upper-case hexadecimal without prefix or padding. Digits beyond 9 take effect when editing is finished:
/// the inherited validation refuses them until fixup has set the value.
class HexSpinBox final : public QSpinBox {
    Q_OBJECT

public:
    explicit HexSpinBox(QWidget* parent = nullptr);

    using QSpinBox::lineEdit;

    void fixup(QString& input) const override;

protected:
    [[nodiscard]] int valueFromText(const QString& text) const override;
    [[nodiscard]] QString textFromValue(int value) const override;
};
