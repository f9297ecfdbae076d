// The downloaded pictures in the working directory.
#pragma once

#include <QString>

/// "<id>.jpg"
[[nodiscard]] QString localPictureName(unsigned id);

/// Deletes the local picture of this id before a new one is fetched. False when an old file stays: it must
/// not be shown as the new one, because the download cannot have replaced it either.
[[nodiscard]] bool removeLocalPicture(unsigned id);
