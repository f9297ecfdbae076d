#include "pictures/imgdialog.h"

#include "ui_imgdialog.h"

#include <QDebug>
#include <QPixmapCache>

namespace {
constexpr QSize pictureSize{600, 400};
} // namespace

ImgDialog::ImgDialog(QWidget* parent) : QDialog(parent), m_ui(std::make_unique<Ui::ImgDialog>()) {
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
}

ImgDialog::~ImgDialog() {
    qDebug() << "imgDialog destroyed";
}

void ImgDialog::showPicture(const QString& name) {
    QPixmapCache::clear(); // the file of this name may have changed since it was last loaded
    const QPixmap picture(name);
    if (picture.isNull())
        m_ui->label->setText(tr("图片不存在或者图片数据错误"));
    else
        m_ui->label->setPixmap(picture.scaled(pictureSize, Qt::KeepAspectRatio, Qt::FastTransformation));
    show();
}
