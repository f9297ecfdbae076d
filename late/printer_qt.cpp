#include "late/printer.h"

#include <QPrintDialog>
#include <QPrinter>

namespace late {

void askForPrinter(QWidget* parent, const Paint& paint) {
    auto* const dialog = new QPrintDialog(parent); // owns its printer
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, qOverload<QPrinter*>(&QPrintDialog::accepted), dialog,
                     [paint](QPrinter* printer) { paint(*printer); });
    dialog->open();
}

} // namespace late
