// The program's icon.
#pragma once

#include <QIcon>

/// Reads a picture when it is asked for: seven pictures take a twentieth of the program's start.
[[nodiscard]] QIcon programIcon();
