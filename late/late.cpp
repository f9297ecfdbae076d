#include "late/late.h"

#include "late/entries.h"
#include "late/load.h"

namespace late {

QString adapterText() {
    return loadEntries().adapterText();
}

bool canPrint() {
    return CAMERA_CAN_PRINT;
}

void printOnPaper(QWidget* parent, const std::function<void(QPagedPaintDevice&)>& paint) {
    loadEntries().printOnPaper(parent, paint);
}

} // namespace late
