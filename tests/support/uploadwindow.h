// The main window with a virtual camera, for uploads.
#pragma once

#include "tests/support/camerawindow.h"
#include "tests/support/printing.h"

#include <gtest/gtest.h>

#include <functional>

using guitest::FileChooser;

/// An upload of the window.
struct WindowUpload {
    const char* name;
    const char* pathButton;
    const char* updateButton;
    const char* pathLabel;
    const char* request;  ///< announcement, as the virtual camera calls it
    std::uint8_t code;    ///< the same
    const char* startLog; ///< debug line with which the task starts
    bool secondProtocol;
};
void PrintTo(const WindowUpload& upload, std::ostream* out);

extern const WindowUpload appUpload;
extern const WindowUpload appUploadV1;
extern const WindowUpload systemUpload;
extern const WindowUpload modelUpload;

/// Cuts pauses of the link to a few ms and records them, unless a test asks for real ones.
class UploadWindow : public testing::Test, protected guitest::CameraWindow {
protected:
    UploadWindow();
    ~UploadWindow() override;

    static QString writeFile(const QString& name, int size);
    /// Switches the window and the virtual camera to the second protocol.
    void useSecondProtocol(bool holdsImage);
    void choose(const WindowUpload& upload, const QString& path);
    /// Chooses a file of this size and presses the button; switches the protocol if needed.
    void start(const WindowUpload& upload, int size = 1300, bool holdsImage = true);
    /// Answers the only box of the upload; its text.
    QString outcome(int timeoutMs = 50000);
    void realPauses() { clock.pauseForReal(); }
    [[nodiscard]] std::vector<std::chrono::milliseconds> longPauses() const;

    /// Controls and menu entries that an upload and the return wait disable.
    [[nodiscard]] QStringList enabledExchanges() const;
    [[nodiscard]] QStringList allExchanges() const;
};
