#include "updates/appupdatev1task.h"

#include <QDebug>

#include <utility>

AppUpdateV1Task::AppUpdateV1Task(CameraSp* camera, QString path, QString fileName, QObject* parent)
    : UploadTask(camera, parent), m_path(std::move(path)), m_fileName(std::move(fileName)) {}

void AppUpdateV1Task::logStart() const {
    qDebug() << "running" << m_fileName << "  " << m_path;
}

bool AppUpdateV1Task::upload(CameraSp& camera) {
    return camera.appUpdateV1(m_fileName.toStdString(), m_path.toStdString());
}

void AppUpdateV1Task::emitEnd(bool result) {
    emit appupdateV1End(result);
}
