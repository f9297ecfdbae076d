#include "pictures/picturelistwindow.h"

#include "linkaccess/signs.h"
#include "pictures/imgdialog.h"
#include "pictures/localpicture.h"
#include "pictures/picturelistdelegate.h"
#include "pictures/picturelistmodel.h"
#include "ui_picturelistwindow.h"

#include <QDebug>
#include <QMenu>
#include <QMessageBox>
#include <QShortcut>

#include <algorithm>

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
    setSign(m_ui->btn_takepic, Sign::picture);
    m_model->setParent(this);
    delegate->setParent(this);
    m_ui->listview->setModel(m_model);
    m_ui->listview->setItemDelegate(delegate);
    m_ui->header->setUp(generation, m_ui->listview);
    if (parent != nullptr && parent->property(generation.windowTitle).isValid())
        resize(parent->property(generation.windowTitle).toSize());

    connect(m_ui->btn_refresh, &QPushButton::clicked, this, &PictureListWindow::refresh);
    connect(m_ui->btn_delete_all, &QPushButton::clicked, this, &PictureListWindow::deleteAll);
    connect(m_ui->btn_takepic, &QPushButton::clicked, this, &PictureListWindow::takePicture);
    connect(m_ui->listview, &QListView::customContextMenuRequested, this, &PictureListWindow::showMenu);
    connectList();
    connectKeys();
    connectAll();
}

void PictureListWindow::closeEvent(QCloseEvent* event) {
    if (parentWidget() != nullptr)
        parentWidget()->setProperty(m_model->generation().windowTitle, size());
    QWidget::closeEvent(event);
}

void PictureListWindow::connectKeys() {
    const auto onKey = [this](const QKeySequence& key, const auto& action) {
        auto* const shortcut = new QShortcut(key, m_ui->listview);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, action);
    };
    onKey(Qt::Key_Return, &PictureListWindow::viewChosen);
    onKey(Qt::Key_Enter, &PictureListWindow::viewChosen);
    onKey(Qt::Key_Delete, [this] { askToDelete(chosen()); });
    // The platform turns the menu key into a menu event; not all do so with this key.
    onKey(Qt::SHIFT | Qt::Key_F10, &PictureListWindow::showMenuAtRow);
    for (int column = 0; column < m_model->columnCount(); ++column) {
        auto* const shortcut = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + column)), this);
        connect(shortcut, &QShortcut::activated, this, [this, column] { m_ui->header->sortBy(column); });
    }
}

void PictureListWindow::connectList() {
    connect(m_ui->listview, &QListView::doubleClicked, this, &PictureListWindow::viewChosen);
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

std::vector<QPersistentModelIndex> PictureListWindow::chosen() const {
    const QModelIndexList selected = m_ui->listview->selectionModel()->selectedIndexes();
    std::vector<QPersistentModelIndex> rows(selected.begin(), selected.end());
    std::sort(rows.begin(), rows.end());
    return rows;
}

QPersistentModelIndex PictureListWindow::chosenToView() const {
    const auto* const selection = m_ui->listview->selectionModel();
    const QModelIndex current = selection->currentIndex();
    return selection->isSelected(current) ? current : selection->selectedIndexes().value(0);
}

void PictureListWindow::showMenu(const QPoint& position) {
    qDebug() << "pos:" << position;
    const std::vector<QPersistentModelIndex> rows = chosen();
    if (rows.empty())
        return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu->addAction(tr("删除")), &QAction::triggered, this, [this, rows] {
        if (rows.size() == 1)
            deleteRow(rows.front());
        else
            askToDelete(rows);
    });
    connect(menu->addAction(tr("查看")), &QAction::triggered, this,
            [this, index = chosenToView()] { viewRow(index); });
    menu->popup(m_ui->listview->viewport()->mapToGlobal(position));
}

void PictureListWindow::showMenuAtRow() {
    showMenu(m_ui->listview->inputMethodQuery(Qt::ImCursorRectangle).toRect().center());
}

// --- deletions ---------------------------------------------------------------------------------------------

bool PictureListWindow::deleteRow(const QPersistentModelIndex& index) {
    if (!index.isValid() || !isEnabled() || !deletePicture(index.row()))
        return false;
    m_model->removeRow(index.row());
    return true;
}

void PictureListWindow::askToDelete(std::vector<QPersistentModelIndex> rows) {
    std::erase_if(rows, [](const QPersistentModelIndex& index) { return !index.isValid(); });
    if (rows.empty())
        return;
    const unsigned first = m_model->pictureId(rows.front().row());
    auto* const box =
        new QMessageBox(QMessageBox::Question, tr("删除图片"),
                        rows.size() == 1 ? tr("要从摄像头删除图片 %1 吗？").arg(first)
                                         : tr("要从摄像头删除选中的 %1 张图片吗？").arg(rows.size()),
                        QMessageBox::Yes | QMessageBox::No, this);
    const unsigned all = m_model->generation().allPictures;
    if (std::any_of(rows.begin(), rows.end(),
                    [&](const QModelIndex& index) { return m_model->pictureId(index.row()) == all; }))
        box->setInformativeText(tr("编号 %1 就是“全部”的编号：摄像头会删除全部图片").arg(all));
    box->setDefaultButton(QMessageBox::No);
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QMessageBox::finished, this, [this, rows](int answer) {
        if (answer != QMessageBox::Yes)
            return;
        m_toDelete = rows;
        deleteNext();
    });
    box->open();
}

void PictureListWindow::deleteNext() {
    if (m_toDelete.empty())
        return;
    const QPersistentModelIndex index = m_toDelete.front();
    m_toDelete.erase(m_toDelete.begin());
    if (!deleteRow(index))
        m_toDelete.clear();
    else if (!m_toDelete.empty())
        QTimer::singleShot(0, this, &PictureListWindow::deleteNext);
}

// --- views -------------------------------------------------------------------------------------------------

void PictureListWindow::viewChosen() {
    viewRow(chosenToView());
}

void PictureListWindow::viewRow(const QPersistentModelIndex& index) {
    if (index.isValid())
        viewIn(index.row(), std::make_shared<View>());
}

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
    connect(m_model, &QAbstractItemModel::layoutChanged, view->dialog, enable);
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
