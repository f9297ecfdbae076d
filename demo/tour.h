// The tour: each function of the window once, compared with the virtual camera.
#pragma once

#include "app/mainwindow.h"
#include "demo/democameras.h"
#include "demo/tourguide.h"

class QListView;

inline constexpr std::uint32_t pacedBytesPerSecond = 46080; ///< 460800 baud

/// One run of all stations. User-interface thread; the event loop runs meanwhile.
class Tour {
public:
    Tour(MainWindow& window, DemoCameras& cameras, const QString& folder)
        : m_window(window), m_cameras(cameras), m_guide(folder) {}

    /// Throws TourFailure at the first difference.
    void run();

private:
    // tour.cpp
    void showStart();
    /// Chooses type and address in the dialog and opens the port of that camera.
    void connectTo(emulator::CameraType type);
    void disconnect();
    /// The port is closed and the camera got no bad frame.
    void expectClosed();
    void showStatusControls();
    void showJsonVersion();
    void showDoorAndAbout();
    /// Leaves bytes in the line that nobody reads.
    void leaveStaleBytes();
    void showHeartbeatAfterStaleBytes();
    // touraids.cpp
    void findCamera();
    void checkUp();
    /// Pulls the adapter of the open link, plugs it in and opens the link again.
    void reopenAfterReplug();
    // tourpictures.cpp
    void takePicture(emulator::CameraType type);
    void listPictures(emulator::CameraType type);
    /// Views the first two pictures of the list.
    void viewPictures(QListView& list);
    void downloadAll(QWidget& listWindow);
    // touruploads.cpp
    void uploadAppImage();
    void uploadSystemImage();
    void uploadModel();
    /// Closes the port.
    void stopUpload();
    void uploadAppImageV1();
    // tourrecord.cpp
    void showLineRecord();
    // toursettings.cpp
    void setSerialNumber();
    void setHeater();
    void setCompression();
    void setCaptureAngles();
    void showOrientation();

    [[nodiscard]] emulator::CameraFront& front() { return m_cameras.front(m_type); }
    /// Runs with the connected camera.
    template <typename Function>
    decltype(auto) camera(Function&& function) {
        return front().withCamera(std::forward<Function>(function));
    }

    MainWindow& m_window;
    DemoCameras& m_cameras;
    TourGuide m_guide;
    emulator::CameraType m_type = emulator::CameraType::ostra; ///< the connected one
};
