#include "dialogs/hexspinbox.h"

#include <QDebug>

namespace {

constexpr int base = 16;

} // namespace

HexSpinBox::HexSpinBox(QWidget* parent) : QSpinBox(parent) {}

void HexSpinBox::fixup(QString& input) const {
    qDebug() << input << "  here  " << input.trimmed();
    // The value is set here, in a const function, because validation in base ten never accepts "EE".
    const_cast<HexSpinBox*>(this)->setValue(valueFromText(input));
    input = input.trimmed().toUpper();
}

int HexSpinBox::valueFromText(const QString& text) const {
    return text.toInt(nullptr, base); // 0 when it does not parse
}

QString HexSpinBox::textFromValue(int value) const {
    return QString::number(value, base).toUpper();
}
