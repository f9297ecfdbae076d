// Printing on paper, where the build has a printing library.
#pragma once

#include "service/report.h"

class QWidget;

[[nodiscard]] bool canPrint();
/// Asks for the printer, then prints. Does nothing if canPrint() is false.
void printOnPaper(const service::Checkup& checkup, QWidget* parent);
