#include "pictures/localpicture.h"

#include <QFile>

QString localPictureName(unsigned id) {
    return QStringLiteral("%1.jpg").arg(id);
}

void removeLocalPicture(unsigned id) {
    QFile::remove(localPictureName(id));
}
