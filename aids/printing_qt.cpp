#include "aids/printing.h"

#include <QPrintDialog>
#include <QPrinter>

#include <memory>

bool canPrint() {
    return true;
}

void printOnPaper(const service::Checkup& checkup, QWidget* parent) {
    auto* const dialog = new QPrintDialog(parent); // owns its printer
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, qOverload<QPrinter*>(&QPrintDialog::accepted), dialog,
                     [checkup](QPrinter* printer) { service::printCheckups(checkup, *printer); });
    dialog->open();
}
