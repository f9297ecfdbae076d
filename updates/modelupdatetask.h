#pragma once

#include "updates/uploadtask.h"

#include <QString>

/// Uploads a model. modelName: as typed, without extension; may be empty.
class ModelUpdateTask final : public UploadTask {
    Q_OBJECT

public:
    ModelUpdateTask(CameraSp* camera, QString path, QString modelName, QObject* parent);

signals:
    void modelUpdateEnd(bool result);

private:
    void logStart() const override;
    bool upload(CameraSp& camera) override;
    void emitEnd(bool result) override;

    QString m_path;
    QString m_modelName;
};
