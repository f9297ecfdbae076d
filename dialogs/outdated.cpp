#include "dialogs/outdated.h"

#include <QCoreApplication>
#include <QStyle>
#include <QWidget>

void setOutdated(QWidget* value, bool outdated) {
    value->setProperty("outdated", outdated);
    value->setToolTip(outdated
                          ? QCoreApplication::translate("SetCaptureDegree", "没有读到，不是摄像头现在的值")
                          : QString());
    value->style()->unpolish(value);
    value->style()->polish(value);
}
