// The check-ups of one visit.
#pragma once

#include "service/checkup.h"

namespace service {

class Visit {
public:
    /// Takes the place of an earlier check-up of the same serial number. Returns its place.
    std::size_t add(Checkup checkup);
    /// In the order in which the cameras came.
    [[nodiscard]] const std::vector<Checkup>& checkups() const { return m_checkups; }

private:
    std::vector<Checkup> m_checkups;
};

} // namespace service
