#include "dialogs/settingborrower.h"

#include <QDebug>
#include <QLabel>

using namespace protocol;

namespace {

constexpr std::uint8_t readCommand = code(Command::getProperty);
constexpr std::uint8_t writeCommand = code(Command::setProperty);

/// Which quantity the read that comes now gives: an earlier sequence may have been given up in the middle.
std::size_t takeQuantity(CameraSp& camera, std::size_t count) {
    const Clock::Time now = camera.clock().now();
    const std::size_t quantity = camera.quantities().next(count, now);
    camera.quantities().advance(count, now);
    return quantity;
}

} // namespace

QString SettingBorrower::readName() {
    return QCoreApplication::translate("SettingBorrower", "读取设置");
}

bool SettingBorrower::writeSetting(PropertyId id, Value value) const {
    return ask(QCoreApplication::translate("SettingBorrower", "写入设置"), &CameraSp::setCommonProperty,
               code(id), std::move(value), writeCommand);
}

void SettingBorrower::showByteSetting(PropertyId id, QLabel* label, const QString& prefix,
                                      const QString& failure) const {
    label->clear();
    const Value value = ask(readName(), &CameraSp::getCommonProperty, code(id), readCommand);
    if (value.empty()) {
        label->setText(failure);
        return;
    }
    label->setText(prefix + QString::number(value.front()));
    qDebug() << "resultVector:" << value;
}

std::vector<SettingBorrower::Value> SettingBorrower::readSettings(CameraSp* camera,
                                                                  const std::vector<PropertyId>& ids,
                                                                  std::chrono::milliseconds pauseAfterEach,
                                                                  const std::atomic<bool>& wanted) {
    std::vector<Value> values(ids.size());
    if (camera == nullptr)
        return values;
    const LineTurn::Hold order = camera->takeReadings();
    for (std::size_t i = 0; i < ids.size() && wanted; ++i) {
        {
            const LineTurn::Hold turn = camera->takeLine(LineUser::reading);
            std::size_t place = i;
            if (turn && ids[i] == PropertyId::orientation)
                place = takeQuantity(*camera, ids.size());
            values[place] = camera->getCommonProperty(code(ids[i]), readCommand);
            if (!turn)
                break;
        }
        if (pauseAfterEach.count() > 0)
            camera->pause(pauseAfterEach);
    }
    return values;
}
