// The window that names the tool, its maker and its version.
#pragma once

#include <QDialog>

class QFrame;
class QLabel;

/// Built without a form. Independent of the main window: it never gets a Qt parent.
class AboutDialog final : public QDialog {
    Q_OBJECT

public:
    /// The parent is accepted as in every other window and not used.
    explicit AboutDialog(QWidget* parent = nullptr);

private:
    [[nodiscard]] QFrame* framed(QLabel* label);
};
