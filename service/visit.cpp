#include "service/visit.h"

#include <algorithm>

namespace service {

namespace {
constexpr std::string_view serialNumber = "serialNumber";
}

std::size_t Visit::add(Checkup checkup) {
    const QString serial = checkup.textOf(serialNumber);
    const auto place = std::find_if(m_checkups.begin(), m_checkups.end(), [&](const Checkup& other) {
        return !serial.isEmpty() && other.textOf(serialNumber) == serial;
    });
    const std::size_t number = static_cast<std::size_t>(place - m_checkups.begin());
    if (place == m_checkups.end())
        m_checkups.push_back(std::move(checkup));
    else
        *place = std::move(checkup);
    return number;
}

} // namespace service
