// Keys that every window of the tool understands, and the keys of each window's controls.
#pragma once

class QWidget;

/// Enter presses the button that has the focus, as the space bar does.
void pressButtonsByEnter(QWidget* window);
/// Escape closes the window, as its close button does.
void closeByEscape(QWidget* window);
/// Gives buttons, fields and menus of the window their keys; tool tips and menu entries show them. The texts
/// have no room for mnemonics. Call once, when the window has all its controls.
void giveKeys(QWidget* window);
