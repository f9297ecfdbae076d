// Keys that every window of the tool understands.
#pragma once

class QWidget;

/// Enter presses the button that has the focus, as the space bar does.
void pressButtonsByEnter(QWidget* window);
/// Escape closes the window, as its close button does.
void closeByEscape(QWidget* window);
