// Functions that the start does not need. On Linux the first use loads their libraries, which would take a
// thirtieth of the start's time and memory. A missing library throws std::runtime_error.
#pragma once

#include <QString>

#include <functional>

class QPagedPaintDevice;
class QWidget;

namespace late {

/// Prints on what is given.
using Paint = std::function<void(QPagedPaintDevice&)>;

/// Hardware address of the computer's first network adapter, a fixed text if there is none.
[[nodiscard]] QString adapterText();

/// False in builds without a printing library, where printOnPaper() does nothing.
[[nodiscard]] bool canPrint();
/// Asks for the printer; then paint prints. Returns at once; parent owns the dialog.
void printOnPaper(QWidget* parent, const Paint& paint);

} // namespace late
