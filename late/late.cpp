#include "late/late.h"

#include "late/entries.h"

namespace late {

QString adapterText() {
    return loadEntries().adapterText();
}

bool canPrint() {
    return CAMERA_CAN_PRINT;
}

void printOnPaper(QWidget* parent, const Paint& paint) {
    loadEntries().printOnPaper(parent, paint);
}

} // namespace late
