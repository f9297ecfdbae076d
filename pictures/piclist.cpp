#include "pictures/piclist.h"

#include "pictures/piclistmodel.h"
#include "pictures/piclistmodeldelegate.h"

#include <QDebug>

PicList::PicList(QWidget* parent, CameraSp* client) : PicList(new PicListModel, parent, client) {}

PicList::PicList(PicListModel* model, QWidget* parent, CameraSp* client)
    : PictureListWindow(model, new PicListModelDelegate, parent, client), m_model(model) {}

bool PicList::deleteAllPictures() {
    return ask(tr("删除全部图片"), &CameraSp::delOriginPic, protocol::originDeleteAll);
}

bool PicList::deletePicture(int row) {
    const unsigned id = m_model->pictureId(row);
    qDebug() << "dele?:" << row << "  pid" << id;
    return ask(tr("删除图片 %1").arg(id), &CameraSp::delOriginPic, static_cast<std::uint8_t>(id));
}

void PicList::downloadPicture(int row) {
    const unsigned id = m_model->pictureId(row);
    ask(tr("下载图片 %1").arg(id), &CameraSp::getOriginTargetPic, static_cast<std::uint8_t>(id),
        static_cast<std::uint32_t>(m_model->pictureSize(row)));
}
