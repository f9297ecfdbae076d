#pragma once

#include "updates/uploadtask.h"

#include <QString>

/// Uploads an application image.
class AppUpdateTask final : public UploadTask {
    Q_OBJECT

public:
    AppUpdateTask(CameraSp* camera, QString path, QObject* parent);

signals:
    void appupdateEnd(bool result);

private:
    void logStart() const override;
    bool upload(CameraSp& camera) override;
    void emitEnd(bool result) override;

    QString m_path;
};
