// The downloaded pictures in the working directory.
#pragma once

#include <QString>

/// "<id>.jpg"
[[nodiscard]] QString localPictureName(unsigned id);

/// Deletes the local picture of this id before a new one is fetched. One that stays is replaced by the
/// download or is none of it: whether it is new, the download's report says.
void removeLocalPicture(unsigned id);
