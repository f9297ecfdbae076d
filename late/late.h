// What the start of the tool does without. On Linux the libraries behind it come with the first use: they and
// those that they need take a thirtieth of the start's time and memory. A missing one is a
// std::runtime_error.
#pragma once

#include <QString>

#include <functional>

class QPagedPaintDevice;
class QWidget;

namespace late {

/// Hardware address of the computer's first network adapter, a fixed text if there is none.
[[nodiscard]] QString adapterText();

/// False in builds without a printing library, where printOnPaper() does nothing.
[[nodiscard]] bool canPrint();
/// Asks for the printer; then paint prints. Returns at once; parent owns the dialog.
void printOnPaper(QWidget* parent, const std::function<void(QPagedPaintDevice&)>& paint);

} // namespace late
