// The main window's take-picture flow.
#pragma once

#include "linkaccess/clientborrower.h"

#include <QObject>

class QLabel;

/// Takes a picture and shows it: deletes what the camera holds, captures, finds the new picture in the
/// catalogue and downloads it on the thread pool. Cameras that speak JSON download a picture at once.
///
/// User-interface thread only. The owner keeps its exchange controls disabled between `allowExchange(false)`
/// and `allowExchange(true)`; closing the link stays possible at any step and ends the flow: nothing of an
/// earlier link is shown or sent on a later one.
class CaptureFlow final : public QObject, private ClientBorrower {
    Q_OBJECT

public:
    /// `picture` shows the picture and belongs to the owner, as does the parent. `allowExchange` is called
    /// with false and later with true, possibly twice; it may not delete the flow.
    CaptureFlow(QLabel* picture, std::function<void(bool)> allowExchange);

    /// The new link's client, or null when the link ends. A flow that is under way is dropped; the owner, who
    /// ends the link, gives the controls back itself.
    void attachClient(CameraSp* client);
    using ClientBorrower::setObserver;

    /// The number of a protocol::CameraType; one that is none is of the first generation.
    void start(std::uint32_t cameraType);

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
    /// Tells the observer how the run, or the part of it under way, ended.
    void tellEnd(const SharedCapture& capture, const UseOutcome& outcome) const;

    /// Takes the controls; the number returned gives them back.
    [[nodiscard]] std::uint64_t holdControls();
    /// Nothing happens when this run has given them back before, or another run holds them by now.
    void releaseControls(std::uint64_t run);

    QLabel* m_picture;
    std::function<void(bool)> m_allowExchange;
    std::uint64_t m_runs = 0;
    std::uint64_t m_holder = 0; ///< the run that holds the controls; 0: none
};
