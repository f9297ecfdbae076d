// Buttons, menu, keys and mouse of the picture view.
#include "pictures/imgdialog.h"
#include "ui_imgdialog.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QMenu>
#include <QMouseEvent>
#include <QToolButton>
#include <QWheelEvent>

#include <array>
#include <utility>

namespace {

constexpr double keyPan = 40; // device-independent pixels

} // namespace

/// One action: button, menu entry and keys.
struct ImgDialog::Command {
    const char* button; ///< object name; null: neither button nor menu entry
    const char* text;
    const char* toolTip;
    const char* keys; ///< separated by "; ", the one to show first
    Need need;
    bool repeats; ///< while the key is held
    void (*run)(ImgDialog& dialog);
};

std::span<const ImgDialog::Command> ImgDialog::commands() {
    static constexpr auto all = std::to_array<Command>({
        {"btn_previous", QT_TRANSLATE_NOOP("ImgDialog", "上一张"),
         QT_TRANSLATE_NOOP("ImgDialog", "下载并显示列表里的上一张"), "PgUp", Need::previous, false,
         [](ImgDialog& dialog) { emit dialog.neighbourWanted(-1); }},
        {"btn_next", QT_TRANSLATE_NOOP("ImgDialog", "下一张"),
         QT_TRANSLATE_NOOP("ImgDialog", "下载并显示列表里的下一张"), "PgDown", Need::next, false,
         [](ImgDialog& dialog) { emit dialog.neighbourWanted(1); }},
        {"btn_zoom_in", QT_TRANSLATE_NOOP("ImgDialog", "放大"),
         QT_TRANSLATE_NOOP("ImgDialog", "放大，也可以滚动滚轮，然后拖动图片"),
         "+; =; Ctrl++; Ctrl+=", Need::zoom, true, [](ImgDialog& dialog) { dialog.zoom(1); }},
        {"btn_zoom_out", QT_TRANSLATE_NOOP("ImgDialog", "缩小"), QT_TRANSLATE_NOOP("ImgDialog", "缩小"),
         "-; Ctrl+-", Need::zoomed, true, [](ImgDialog& dialog) { dialog.zoom(-1); }},
        {"btn_fit", QT_TRANSLATE_NOOP("ImgDialog", "适合"), QT_TRANSLATE_NOOP("ImgDialog", "显示整张图片"),
         "0; Ctrl+0", Need::zoomed, true, [](ImgDialog& dialog) { dialog.fit(); }},
        {"btn_save_as", QT_TRANSLATE_NOOP("ImgDialog", "另存为…"),
         QT_TRANSLATE_NOOP("ImgDialog", "原样保存下载的文件"), "Ctrl+S", Need::picture, false,
         [](ImgDialog& dialog) { dialog.saveAs(); }},
        {"btn_copy", QT_TRANSLATE_NOOP("ImgDialog", "复制"),
         QT_TRANSLATE_NOOP("ImgDialog", "复制整张图片，可以粘贴到文档"), "Ctrl+C", Need::picture, false,
         [](ImgDialog& dialog) { dialog.copy(); }},
        {nullptr, nullptr, nullptr, "Left", Need::zoomed, true,
         [](ImgDialog& dialog) { dialog.pan(-keyPan, 0); }},
        {nullptr, nullptr, nullptr, "Right", Need::zoomed, true,
         [](ImgDialog& dialog) { dialog.pan(keyPan, 0); }},
        {nullptr, nullptr, nullptr, "Up", Need::zoomed, true,
         [](ImgDialog& dialog) { dialog.pan(0, -keyPan); }},
        {nullptr, nullptr, nullptr, "Down", Need::zoomed, true,
         [](ImgDialog& dialog) { dialog.pan(0, keyPan); }},
    });
    return all;
}

void ImgDialog::addActions() {
    auto* const row = new QHBoxLayout(m_bar);
    row->setContentsMargins(4, 2, 4, 2);
    row->setSpacing(2);
    for (const Command& command : commands()) {
        auto* const action = new QAction(this);
        action->setShortcuts(QKeySequence::listFromString(QLatin1String(command.keys)));
        action->setAutoRepeat(command.repeats);
        connect(action, &QAction::triggered, this, [this, run = command.run] { run(*this); });
        addAction(action);
        m_actions.emplace_back(action, command.need);
        if (command.button != nullptr)
            row->addWidget(addButton(command, action));
    }
    m_bar->setAutoFillBackground(true);
    m_bar->raise();
    setMinimumWidth(m_bar->sizeHint().width());
    enableActions();
}

QToolButton* ImgDialog::addButton(const Command& command, QAction* action) {
    action->setText(tr(command.text));
    action->setToolTip(QStringLiteral("%1（%2）")
                           .arg(tr(command.toolTip), action->shortcut().toString(QKeySequence::NativeText)));
    m_menuActions.push_back(action);
    auto* const button = new QToolButton(m_bar);
    button->setObjectName(QLatin1String(command.button));
    button->setDefaultAction(action);
    button->setAccessibleName(action->text());
    button->setAutoRaise(true);
    return button;
}

bool ImgDialog::has(Need need) const {
    switch (need) {
    case Need::previous:
        return m_hasPrevious;
    case Need::next:
        return m_hasNext;
    case Need::zoom:
        return m_zoom.canZoomIn();
    case Need::zoomed:
        return m_zoom.isZoomed();
    case Need::picture:
        return !m_zoom.picture().isNull();
    }
    return false;
}

void ImgDialog::enableActions() {
    for (const auto& [action, need] : m_actions)
        action->setEnabled(has(need));
    if (m_zoom.isZoomed())
        m_ui->label->setCursor(m_dragged ? Qt::ClosedHandCursor : Qt::OpenHandCursor);
    else
        m_ui->label->unsetCursor();
}

void ImgDialog::contextMenuEvent(QContextMenuEvent* event) {
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (QAction* const action : m_menuActions)
        menu->addAction(action);
    menu->popup(event->globalPos());
}

// --- section -----------------------------------------------------------------------------------------------

void ImgDialog::zoom(int steps, QPointF anchor) {
    m_zoom.zoom(steps, anchor, m_ui->label->size());
    showSection();
}

void ImgDialog::fit() {
    m_zoom.fit();
    showSection();
}

void ImgDialog::pan(double x, double y) {
    m_zoom.pan({x, y}, m_ui->label->size());
    showSection();
}

void ImgDialog::showSection() {
    m_ui->label->setPixmap(m_zoom.visible(m_ui->label->size(), devicePixelRatioF()));
    enableActions();
}

void ImgDialog::wheelEvent(QWheelEvent* event) {
    if (!has(Need::picture))
        return;
    m_wheelAngle += event->angleDelta().y();
    const int notches = m_wheelAngle / QWheelEvent::DefaultDeltasPerStep;
    m_wheelAngle %= QWheelEvent::DefaultDeltasPerStep;
    const QPointF place = m_ui->label->mapFrom(this, event->position());
    zoom(notches, place - QRectF(m_ui->label->rect()).center());
}

void ImgDialog::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !m_zoom.isZoomed())
        return;
    m_dragged = event->globalPosition();
    enableActions();
}

void ImgDialog::mouseMoveEvent(QMouseEvent* event) {
    if (!m_dragged)
        return;
    const QPointF place = event->globalPosition();
    const QPointF by = *std::exchange(m_dragged, place) - place;
    pan(by.x(), by.y());
}

void ImgDialog::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    m_dragged.reset();
    enableActions();
}

void ImgDialog::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    placeBar();
    if (m_zoom.isZoomed())
        showSection();
}

void ImgDialog::placeBar() {
    const QSize size = m_bar->sizeHint();
    m_bar->setGeometry((width() - size.width()) / 2, height() - size.height(), size.width(), size.height());
}
