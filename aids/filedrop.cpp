#include "aids/filedrop.h"

#include <QDropEvent>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QToolTip>
#include <QUrl>
#include <QWidget>

#include <algorithm>
#include <utility>

FileDrop::FileDrop(QWidget* window, std::function<bool(ImageKind)> mayChoose)
    : QObject(window), m_window(window), m_mayChoose(std::move(mayChoose)) {
    window->setAcceptDrops(true);
    window->installEventFilter(this);
}

bool FileDrop::eventFilter(QObject* object, QEvent* event) {
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
        hover(*static_cast<QDropEvent*>(event)); // base of both
        return true;
    case QEvent::DragLeave:
        QToolTip::hideText();
        return true;
    case QEvent::Drop:
        drop(*static_cast<QDropEvent*>(event));
        return true;
    default:
        return QObject::eventFilter(object, event);
    }
}

FileDrop::Offer FileDrop::offerOf(const QMimeData& data) const {
    const QList<QUrl> urls = data.urls();
    const QString path = urls.size() == 1 ? urls.front().toLocalFile() : QString();
    if (path.isEmpty() || !QFileInfo(path).isFile())
        return {{}, {}, tr("请拖入一个文件")};
    if (std::none_of(allImageKinds.begin(), allImageKinds.end(), m_mayChoose))
        return {{}, {}, tr("现在不能选择文件：请先打开串口，或等待当前操作结束")};
    const auto kind = imageKindOf(path);
    if (kind && m_mayChoose(*kind))
        return {path, kind, tr("松开后选为%1").arg(imageKindName(*kind))};
    return {path, {}, tr("松开后询问用于哪种升级")};
}

void FileDrop::hover(QDropEvent& event) {
    if (!event.mimeData()->hasUrls()) {
        event.ignore();
        return;
    }
    const Offer offer = offerOf(*event.mimeData());
    QToolTip::showText(m_window->mapToGlobal(event.position().toPoint()), offer.hint, m_window);
    event.setDropAction(Qt::CopyAction); // the file stays where it is
    event.setAccepted(!offer.path.isEmpty());
}

void FileDrop::drop(QDropEvent& event) {
    QToolTip::hideText();
    const Offer offer = offerOf(*event.mimeData());
    event.setDropAction(Qt::CopyAction);
    event.setAccepted(!offer.path.isEmpty());
    if (offer.path.isEmpty())
        return;
    if (offer.kind)
        emit chosen(*offer.kind, offer.path);
    else
        ask(offer.path);
}

void FileDrop::ask(const QString& path) {
    auto* const box = new QMessageBox(QMessageBox::Question, tr("选择文件"),
                                      tr("“%1”用于哪种升级？").arg(QFileInfo(path).fileName()),
                                      QMessageBox::Cancel, m_window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    for (const ImageKind kind : allImageKinds) {
        QPushButton* const button = box->addButton(imageKindName(kind), QMessageBox::ActionRole);
        connect(button, &QPushButton::clicked, this, [this, kind, path] {
            if (m_mayChoose(kind))
                emit chosen(kind, path);
        });
    }
    box->open();
}
