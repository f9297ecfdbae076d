// A build without a printing library.
#include "aids/printing.h"

bool canPrint() {
    return false;
}

void printOnPaper(const service::Checkup&, QWidget*) {}
