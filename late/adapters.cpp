#include "late/adapters.h"

namespace late {

QString textOf(const QList<QNetworkInterface>& adapters) {
    for (const QNetworkInterface& adapter : adapters) {
        if (!adapter.isValid() || adapter.flags().testFlag(QNetworkInterface::IsLoopBack))
            continue;
        QString address = adapter.hardwareAddress();
        if (!address.isEmpty())
            return address;
    }
    return QStringLiteral("123456");
}

} // namespace late
