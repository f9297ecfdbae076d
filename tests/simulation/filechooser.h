// The system's file dialog of a simulated session.
#pragma once

namespace simulation {

/// From now on QFileDialog asks a chooser of the system, as on Windows, in place of widgets, which take a
/// third of a session's processor time. It shows nothing and takes what QFileDialog::selectFile() tells it.
void useSystemFileChooser();

} // namespace simulation
