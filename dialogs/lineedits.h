// Shared settings of line edits.
#pragma once

class QAbstractButton;
class QLineEdit;

/// Return in the edit presses the button, and the edit never gets narrower than its placeholder.
void pairWithButton(QLineEdit* edit, QAbstractButton* button);
