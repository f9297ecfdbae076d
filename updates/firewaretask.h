#pragma once

#include "updates/uploadtask.h"

#include <QString>

/// Uploads a system image.
class FirewareTask final : public UploadTask {
    Q_OBJECT

public:
    FirewareTask(CameraSp* camera, QString path, QObject* parent);

signals:
    void firewareEnd(bool result);

private:
    void logStart() const override;
    bool upload(CameraSp& camera) override;
    void emitEnd(bool result) override;

    QString m_path;
};
