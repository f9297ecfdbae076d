#include "updates/uploadtask.h"

UploadTask::UploadTask(CameraSp* camera, QObject* parent)
    : QThread(parent), m_camera(camera),
      m_lease(camera != nullptr ? CameraSp::Lease(*camera) : CameraSp::Lease()) {}

void UploadTask::run() {
    logStart();
    const ReportScope scope;
    const bool result = m_camera != nullptr && upload(*m_camera);
    m_report = scope.report();
    m_lease = CameraSp::Lease();
    emitEnd(result);
    quit();
}
