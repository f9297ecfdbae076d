// A build without a printing library.
#include "late/printer.h"

namespace late {

void askForPrinter(QWidget* /*parent*/, const Paint& /*paint*/) {}

} // namespace late
