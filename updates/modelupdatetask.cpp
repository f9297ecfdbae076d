#include "updates/modelupdatetask.h"

#include <QDebug>

#include <utility>

ModelUpdateTask::ModelUpdateTask(CameraSp* camera, QString path, QString modelName, QObject* parent)
    : UploadTask(camera, parent), m_path(std::move(path)), m_modelName(std::move(modelName)) {}

void ModelUpdateTask::logStart() const {
    qDebug() << "modelUpdateTask running";
}

bool ModelUpdateTask::upload(CameraSp& camera) {
    camera.setModelNameAndPath(m_modelName.toStdString(), m_path.toStdString());
    return camera.modelUpdate();
}

void ModelUpdateTask::emitEnd(bool result) {
    emit modelUpdateEnd(result);
}
