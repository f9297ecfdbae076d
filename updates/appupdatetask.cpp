#include "updates/appupdatetask.h"

#include <QDebug>

#include <utility>

AppUpdateTask::AppUpdateTask(CameraSp* camera, QString path, QObject* parent)
    : UploadTask(camera, parent), m_path(std::move(path)) {}

void AppUpdateTask::logStart() const {
    qDebug() << "running";
}

bool AppUpdateTask::upload(CameraSp& camera) {
    camera.setAppFilePath(m_path.toStdString());
    return camera.appUpdate();
}

void AppUpdateTask::emitEnd(bool result) {
    emit appupdateEnd(result);
}
