// Printing on paper.
#pragma once

#include "late/entries.h"

namespace late {

/// See printOnPaper().
void askForPrinter(QWidget* parent, const Paint& paint);

} // namespace late
