#include "pictures/imgdialog.h"

#include "ui_imgdialog.h"

#include <QBuffer>
#include <QClipboard>
#include <QDebug>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImageReader>
#include <QMessageBox>
#include <QPixmapCache>
#include <QSaveFile>
#include <QStandardPaths>

#include <tuple>

ImgDialog::ImgDialog(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::ImgDialog>()), m_bar(new QWidget(this)) {
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    addActions();
}

ImgDialog::~ImgDialog() {
    qDebug() << "imgDialog destroyed";
}

void ImgDialog::showPicture(const QString& name) {
    QPixmapCache::clear(); // the file of this name may have changed since it was last loaded
    load(name);
    showLoaded();
}

void ImgDialog::showFile(const QByteArray& file, const QString& fileName) {
    m_file = file;
    m_fileName = fileName;
    showLoaded();
}

void ImgDialog::showLoaded() {
    QBuffer content(&m_file);
    QImageReader reader(&content);
    m_zoom.setPicture(m_file.isEmpty() ? QPixmap() : QPixmap::fromImageReader(&reader));
    m_ui->label->setAccessibleName(m_zoom.picture().isNull() ? QString() : m_fileName);
    if (m_zoom.picture().isNull()) {
        m_ui->label->setText(tr("图片不存在或者图片数据错误"));
        m_ui->label->setMinimumSize(0, 0);
    } else {
        showSection();
        m_ui->label->setMinimumSize(m_ui->label->pixmap().size()); // a section may be larger
    }
    enableActions();
    show();
}

void ImgDialog::setNeighbours(bool previous, bool next) {
    m_hasPrevious = previous;
    m_hasNext = next;
    enableActions();
}

void ImgDialog::load(const QString& name) {
    m_file.clear();
    m_fileName.clear();
    if (!name.isEmpty()) {
        QImageReader finder(name);
        std::ignore = finder.canRead(); // opens the file, whatever its suffix
        if (QIODevice* const file = finder.device(); file != nullptr && file->isOpen() && file->seek(0))
            m_file = file->readAll();
        m_fileName = QFileInfo(finder.fileName()).fileName();
    }
}

void ImgDialog::saveAs() {
    const QString suffix = QFileInfo(m_fileName).suffix();
    auto* const dialog = new QFileDialog(this, tr("保存图片"),
                                         QStandardPaths::writableLocation(QStandardPaths::PicturesLocation),
                                         tr("图片文件 (*.%1)").arg(suffix));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(suffix);
    dialog->selectFile(m_fileName);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this, file = m_file](const QString& path) { save(file, path); });
    dialog->open();
}

void ImgDialog::save(const QByteArray& file, const QString& path) {
    QSaveFile target(path);
    if (target.open(QIODevice::WriteOnly) && target.write(file) == file.size() && target.commit())
        return;
    auto* const box = new QMessageBox(QMessageBox::Warning, tr("保存图片"),
                                      tr("图片没有保存，请换一个文件夹"), QMessageBox::Ok, this);
    box->setDetailedText(path + QLatin1Char('\n') + target.errorString());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void ImgDialog::copy() {
    QGuiApplication::clipboard()->setPixmap(m_zoom.picture());
}
