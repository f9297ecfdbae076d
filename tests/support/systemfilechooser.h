// A file dialog of the system's for tests of what comes after it.
#pragma once

namespace guitest {

/// From now on QFileDialog asks a chooser of the system, as on Windows, in place of widgets, whose processor
/// time is a third of a simulated session. It shows nothing and takes what QFileDialog::selectFile() tells
/// it.
void useSystemFileChooser();

} // namespace guitest
