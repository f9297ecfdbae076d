#include "updates/firewaretask.h"

#include <QDebug>

#include <utility>

FirewareTask::FirewareTask(CameraSp* camera, QString path, QObject* parent)
    : UploadTask(camera, parent), m_path(std::move(path)) {}

void FirewareTask::logStart() const {
    // "runing" is how the log has always had it.
    qDebug() << "runing";
}

bool FirewareTask::upload(CameraSp& camera) {
    camera.setFirewareFilePath(m_path.toStdString());
    return camera.firewareUpdate();
}

void FirewareTask::emitEnd(bool result) {
    emit firewareEnd(result);
}
