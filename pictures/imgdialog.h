// Shows one downloaded picture.
#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class ImgDialog;
}

/// Deletes itself when it is closed.
class ImgDialog final : public QDialog {
    Q_OBJECT

public:
    explicit ImgDialog(QWidget* parent = nullptr);
    ~ImgDialog() override;

    /// Loads the picture and opens the dialog. A name without suffix finds the file of any known image
    /// format; a picture that is missing or broken is said so.
    void showPicture(const QString& name);

private:
    std::unique_ptr<Ui::ImgDialog> m_ui;
};
