// Printing on paper.
#pragma once

#include "late/late.h"

namespace late {

/// See printOnPaper().
void askForPrinter(QWidget* parent, const Paint& paint);

} // namespace late
