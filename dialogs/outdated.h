// Values of an earlier read or link.
#pragma once

class QWidget;

/// Greys the value, by its window's style sheet, and says in its tool tip that it was not read.
void setOutdated(QWidget* value, bool outdated);
