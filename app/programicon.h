// The program's icon.
#pragma once

#include <QIcon>

/// Reads a picture when it is asked for.
[[nodiscard]] QIcon programIcon();
