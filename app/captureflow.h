// The main window's take-picture flow.
#pragma once

#include "borrow/clientborrower.h"

#include <QObject>

class QLabel;

/// Takes a picture and shows it: deletes what the camera holds, captures, finds the new picture in the
/// catalogue and downloads it on the thread pool. Cameras that speak JSON download a picture at once.
///
/// User-interface thread only. The flow leaves the window usable: the owner disables its exchange controls
/// while `allowExchange` said false, but closing the link stays possible at any step. It ends the flow:
/// nothing of an earlier link is shown or sent on a later one.
class CaptureFlow final : public QObject, private ClientBorrower {
    Q_OBJECT

public:
    /// `picture` shows the picture and belongs to the owner, as does the parent. `allowExchange` is called
    /// with false and later with true, possibly twice; it may not delete the flow.
    CaptureFlow(QLabel* picture, std::function<void(bool)> allowExchange, QObject* parent);

    /// The new link's client, or null when the link ends; a flow that is under way is dropped and its
    /// controls are given back.
    void attachClient(CameraSp* client);

    /// Camera types 3 (JSON) and 4 (V1) have paths of their own; every other type is the first generation.
    void start(std::uint32_t cameraType);

private:
    struct Path;
    struct Capture;
    using SharedCapture = std::shared_ptr<Capture>;

    static const Path originPath;
    static const Path v1Path;

    void startFrames(const Path& path);
    void startJson();

    void afterDelay(std::chrono::milliseconds delay, std::function<void()> step);
    void takePicture(const Path& path);
    void findPicture(const Path& path, const SharedCapture& capture);
    void showPicture(unsigned id, bool fresh);
    void setBusy(bool busy);

    QLabel* m_picture;
    std::function<void(bool)> m_allowExchange;
    bool m_busy = false;
};
