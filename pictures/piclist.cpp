#include "pictures/piclist.h"

#include "pictures/piclistmodel.h"
#include "pictures/piclistmodeldelegate.h"

#include <QDebug>

PicList::PicList(QWidget* parent, CameraSp* client) : PicList(new PicListModel, parent, client) {}

PicList::PicList(PicListModel* model, QWidget* parent, CameraSp* client)
    : PictureListWindow(model, new PicListModelDelegate, parent, client), m_model(model) {}

bool PicList::deleteAllPictures() {
    return ask(&CameraSp::delOriginPic, protocol::originDeleteAll);
}

bool PicList::deletePicture(int row) {
    const unsigned id = m_model->pictureId(row);
    qDebug() << "dele?:" << row << "  pid" << id;
    return ask(&CameraSp::delOriginPic, static_cast<std::uint8_t>(id));
}

void PicList::downloadPicture(int row) {
    ask(&CameraSp::getOriginTargetPic, static_cast<std::uint8_t>(m_model->pictureId(row)),
        static_cast<std::uint32_t>(m_model->pictureSize(row)));
}
