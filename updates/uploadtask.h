// What the four upload tasks share.
#pragma once

#include "link/camerasp.h"

#include <QThread>

/// One upload on a thread of its own. Made and started on the user-interface thread, where its end signal
/// arrives; it ends by itself and lives on as a child of its parent. The client is leased from construction
/// until the upload is over; without a client the upload has failed.
class UploadTask : public QThread {
    Q_OBJECT

public:
    /// Why it failed. To be read when the end signal has come.
    [[nodiscard]] const CommandReport& report() const { return m_report; }

protected:
    UploadTask(CameraSp* camera, QObject* parent);

    /// Log line, upload, end signal. A file that cannot be opened ends the process: its exception is not
    /// caught here.
    void run() final;

private:
    virtual void logStart() const = 0;
    virtual bool upload(CameraSp& camera) = 0;
    virtual void emitEnd(bool result) = 0;

    CameraSp* m_camera;
    CameraSp::Lease m_lease;
    CommandReport m_report;
};
