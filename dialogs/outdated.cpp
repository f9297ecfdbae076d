#include "dialogs/outdated.h"

#include <QCoreApplication>
#include <QStyle>
#include <QWidget>

void setOutdated(QWidget* value, bool outdated) {
    value->setProperty("outdated", outdated);
    value->setToolTip(outdated
                          ? QCoreApplication::translate("SetCaptureDegree", "没有读到，不是摄像头现在的值")
                          : QString());
    QPalette colors;
    if (outdated)
        colors.setColor(QPalette::WindowText, value->palette().color(QPalette::PlaceholderText));
    value->setPalette(colors);
}
