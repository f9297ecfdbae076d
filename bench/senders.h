// Uploads by a separate program, e.g. for another system, compared with its plain copy.
#pragma once

#include "bench/results.h"
#include "bench/transfers.h"

#include <string>
#include <vector>

namespace bench {

struct Sender {
    std::vector<std::string> program; ///< upload_sender with its port, and what starts it
    std::string link;                 ///< path at which that port is looked for
};

/// In the working directory, which must be an empty one of its own.
void measureSender(Results& results, const Sender& sender, const TransferSizes& sizes);

} // namespace bench
