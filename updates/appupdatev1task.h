#pragma once

#include "updates/uploadtask.h"

#include <QString>

/// Announces an application image by the second protocol. fileName: the last component of the path.
class AppUpdateV1Task final : public UploadTask {
    Q_OBJECT

public:
    AppUpdateV1Task(CameraSp* camera, QString path, QString fileName, QObject* parent);

signals:
    void appupdateV1End(bool result);

private:
    void logStart() const override;
    bool upload(CameraSp& camera) override;
    void emitEnd(bool result) override;

    QString m_path;
    QString m_fileName;
};
