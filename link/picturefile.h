// Writing a downloaded picture.
#pragma once

#include "link/protocol/bytes.h"

#include <string>

/// Writes or replaces the file in the folder (UTF-8; empty: the working directory). It appears under its name
/// only when it is complete; otherwise nothing is left and one line is logged. Returns whether it was
/// written.
bool writePicture(const std::string& name, protocol::ByteView picture, const std::string& folder = {});
