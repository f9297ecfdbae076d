// Network adapters of the computer.
#pragma once

#include <QList>
#include <QNetworkInterface>

namespace late {

/// Hardware address of the first one but loopback; a fixed text if none has one.
[[nodiscard]] QString textOf(const QList<QNetworkInterface>& adapters);

} // namespace late
