#include "pictures/localpicture.h"

#include <QFile>

QString localPictureName(unsigned id) {
    return QStringLiteral("%1.jpg").arg(id);
}

bool removeLocalPicture(unsigned id) {
    const QString name = localPictureName(id);
    return QFile::remove(name) || !QFile::exists(name);
}
