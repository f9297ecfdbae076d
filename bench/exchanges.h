// One exchange of each rule against the time that the rule itself takes.
#pragma once

#include "bench/results.h"

namespace bench {

/// `rounds` exchanges of every rule whose name contains the text; the median and the worst count.
void measureExchanges(Results& results, int rounds, const std::string& namePart);

} // namespace bench
