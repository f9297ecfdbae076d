// Cost of growing picture lists.
#pragma once

#include "bench/results.h"

namespace bench {

/// Fills and paints a V1 list window with 10 to 1551 records, `rounds` times each; time and memory for each
/// record. Needs a QApplication.
void measureLists(Results& results, int rounds);

} // namespace bench
