#include "pictures/picturelistwindow.h"

#include "pictures/imgdialog.h"
#include "pictures/localpicture.h"
#include "pictures/picturelistdelegate.h"
#include "pictures/picturelistmodel.h"
#include "ui_picturelistwindow.h"

#include <QDebug>
#include <QMenu>
#include <QMessageBox>
#include <QShortcut>

namespace {
using namespace std::chrono_literals;

constexpr auto reloadDelay = 1000ms; // the camera needs a moment until its catalogue is right again
} // namespace

PictureListWindow::PictureListWindow(PictureListModel* model, PictureListDelegate* delegate, QWidget* parent,
                                     CameraSp* client)
    : QWidget(parent, Qt::Window), ClientBorrower(this, client),
      m_ui(std::make_unique<Ui::PictureListWindow>()), m_model(model) {
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    const PictureGeneration& generation = m_model->generation();
    setWindowTitle(generation.translatedTitle());
    m_ui->btn_takepic->setObjectName(QLatin1String(generation.captureButtonName));
    m_model->setParent(this);
    delegate->setParent(this);
    m_ui->listview->setModel(m_model);
    m_ui->listview->setItemDelegate(delegate);
    m_ui->header->setUp(generation, m_ui->listview);

    connect(m_ui->btn_refresh, &QPushButton::clicked, this, &PictureListWindow::refresh);
    connect(m_ui->btn_delete_all, &QPushButton::clicked, this, &PictureListWindow::deleteAll);
    connect(m_ui->btn_takepic, &QPushButton::clicked, this, &PictureListWindow::takePicture);
    connect(m_ui->listview, &QListView::customContextMenuRequested, this, &PictureListWindow::showMenu);
    connectList();
    connectAll();
}

void PictureListWindow::connectList() {
    connect(m_ui->listview, &QListView::doubleClicked, this, &PictureListWindow::viewChosen);
    const auto onKey = [this](Qt::Key key, void (PictureListWindow::*action)()) {
        auto* const shortcut = new QShortcut(key, m_ui->listview);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, action);
    };
    onKey(Qt::Key_Return, &PictureListWindow::viewChosen);
    onKey(Qt::Key_Enter, &PictureListWindow::viewChosen);
    onKey(Qt::Key_Delete, &PictureListWindow::deleteChosen);
    connect(m_model, &QAbstractItemModel::rowsInserted, this, &PictureListWindow::summarize);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &PictureListWindow::summarize);
    connect(m_model, &QAbstractItemModel::modelReset, this, &PictureListWindow::summarize);
    summarize();
}

void PictureListWindow::summarize() {
    qint64 size = 0;
    for (int row = 0; row < m_model->rowCount(); ++row)
        size += m_model->pictureSize(row);
    m_ui->summary->setText(tr("共 %1 张，%2 字节").arg(m_model->rowCount()).arg(size));
}

PictureListWindow::~PictureListWindow() {
    stopDownload();
}

void PictureListWindow::reload() {
    m_model->clear();
    m_model->appendPictures(ask(tr("读取图片列表"), m_model->generation().catalogue));
}

template <typename Action>
void PictureListWindow::later(Action action) {
    QTimer::singleShot(clock().timerInterval(reloadDelay), this, [this, action] {
        if (isVisible() && isEnabled())
            action();
    });
}

void PictureListWindow::refresh() {
    reload();
}

void PictureListWindow::deleteAll() {
    if (!deleteAllPictures())
        return;
    m_model->clear();
    later([this] { reload(); });
}

void PictureListWindow::takePicture() {
    const bool taken = ask(tr("拍照"), m_model->generation().capture);
    auto* box = new QMessageBox(QMessageBox::Information, tr("拍照"), taken ? tr("拍照成功") : tr("拍照失败"),
                                QMessageBox::Yes, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QMessageBox::finished, this, [this] { later([this] { m_ui->btn_refresh->click(); }); });
    box->open();
}

QModelIndex PictureListWindow::chosen() const {
    return m_ui->listview->selectionModel()->selectedIndexes().value(0);
}

void PictureListWindow::showMenu(const QPoint& position) {
    qDebug() << "pos:" << position;
    if (!chosen().isValid())
        return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const QPersistentModelIndex index(chosen());
    connect(menu->addAction(tr("删除")), &QAction::triggered, this, [this, index] { deleteRow(index); });
    connect(menu->addAction(tr("查看")), &QAction::triggered, this, [this, index] { viewRow(index); });
    menu->popup(m_ui->listview->viewport()->mapToGlobal(position));
}

void PictureListWindow::deleteRow(const QPersistentModelIndex& index) {
    if (!index.isValid() || !isEnabled())
        return;
    if (deletePicture(index.row()))
        m_model->removeRow(index.row());
}

void PictureListWindow::deleteChosen() {
    const QPersistentModelIndex index(chosen());
    if (!index.isValid())
        return;
    auto* const box = new QMessageBox(QMessageBox::Question, tr("删除图片"),
                                      tr("要从摄像头删除图片 %1 吗？").arg(m_model->pictureId(index.row())),
                                      QMessageBox::Yes | QMessageBox::No, this);
    box->setDefaultButton(QMessageBox::No);
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QMessageBox::finished, this, [this, index](int answer) {
        if (answer == QMessageBox::Yes)
            deleteRow(index);
    });
    box->open();
}

void PictureListWindow::viewChosen() {
    viewRow(chosen());
}

void PictureListWindow::viewRow(const QPersistentModelIndex& index) {
    if (index.isValid())
        viewIn(index.row(), std::make_shared<View>());
}

// --- views -------------------------------------------------------------------------------------------------

void PictureListWindow::viewIn(int row, const std::shared_ptr<View>& view) {
    if (!isEnabled())
        return;
    const unsigned id = m_model->pictureId(row);
    removeLocalPicture(id);
    qDebug() << "get picture:" << row << "  size:" << m_model->pictureSize(row);
    const ReportScope download;
    downloadPicture(row);
    qDebug() << "get picture end";
    const bool written = client() != nullptr && download.report().end == CommandEnd::done;
    if (view->dialog == nullptr)
        openViewer(view);
    view->index = m_model->index(row, 0);
    view->id = id;
    qDebug() << id;
    // An old file that could not be deleted is no picture of this download.
    view->dialog->showPicture(written ? QString::number(id) : QString());
    enableNeighbours(*view);
}

void PictureListWindow::openViewer(const std::shared_ptr<View>& view) {
    view->dialog = new ImgDialog(this);
    connect(view->dialog, &ImgDialog::neighbourWanted, this,
            [this, view](int step) { viewNeighbour(step, view); });
    const auto enable = [this, view] { enableNeighbours(*view); };
    connect(m_model, &QAbstractItemModel::rowsInserted, view->dialog, enable);
    connect(m_model, &QAbstractItemModel::rowsRemoved, view->dialog, enable);
    connect(m_model, &QAbstractItemModel::modelReset, view->dialog, enable);
}

int PictureListWindow::rowOf(const View& view) const {
    return view.index.isValid() ? view.index.row() : m_model->rowOfPicture(view.id);
}

void PictureListWindow::viewNeighbour(int step, const std::shared_ptr<View>& view) {
    const int row = rowOf(*view);
    if (row >= 0 && m_model->hasRow(row + step))
        viewIn(row + step, view);
}

void PictureListWindow::enableNeighbours(const View& view) const {
    const int row = rowOf(view);
    view.dialog->setNeighbours(row > 0, row >= 0 && m_model->hasRow(row + 1));
}
