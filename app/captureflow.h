// The main window's take-picture flow.
#pragma once

#include "app/picturearea.h"
#include "linkaccess/clientborrower.h"

#include <QObject>

class QLabel;

/// Takes a picture and shows it: deletes the camera's pictures, captures, finds the new picture in the
/// catalogue and downloads it on the thread pool. JSON cameras send a picture at once.
///
/// User-interface thread. The owner disables its exchange controls between `allowExchange(false)` and
/// `allowExchange(true)`. Closing the link ends the flow at any step: nothing of an earlier link is shown or
/// sent on a later one.
class CaptureFlow final : public QObject, private ClientBorrower {
    Q_OBJECT

public:
    /// `picture` shows the picture and belongs to the owner, as does the parent. `allowExchange` is called
    /// with false and later with true, possibly twice; it may not delete the flow.
    CaptureFlow(QLabel* picture, std::function<void(bool)> allowExchange);

    /// The new link's client, or null at the end of the link. Drops a running flow; the owner of the link
    /// enables the controls itself.
    void attachClient(CameraSp* client);
    using ClientBorrower::setObserver;

    /// Number of a protocol::CameraType; unknown numbers are of the first generation.
    void start(std::uint32_t cameraType);

signals:
    /// After the label got its pixmap.
    void pictureShown(const TakenPicture& picture);

private:
    struct Path;
    struct Capture;
    struct Download;
    using SharedCapture = std::shared_ptr<Capture>;

    static const Path originPath;
    static const Path v1Path;

    void startFrames(const Path& path);
    void startJson();

    void afterDelay(std::chrono::milliseconds delay, std::function<void()> step);
    void takePicture(const Path& path, const SharedCapture& capture);
    void findPicture(const Path& path, const SharedCapture& capture);
    void endDownload(const SharedCapture& capture, const CommandReport& report);
    /// False when the file holds no picture.
    bool showPicture(unsigned id);
    /// Reports the end of the run, or of its current part, to the observer.
    void tellEnd(const SharedCapture& capture, const UseOutcome& outcome) const;

    /// Disables the controls; the returned number releases them.
    [[nodiscard]] std::uint64_t holdControls();
    /// Does nothing if this run no longer holds them.
    void releaseControls(std::uint64_t run);

    QLabel* m_picture;
    std::function<void(bool)> m_allowExchange;
    std::uint64_t m_runs = 0;
    std::uint64_t m_holder = 0; ///< the run that holds the controls; 0: none
};
