#include "pictures/piclistv1.h"

#include "pictures/piclistv1model.h"
#include "pictures/piclistv1modeldelegate.h"

#include <QDebug>

PicListV1::PicListV1(QWidget* parent, CameraSp* client) : PicListV1(new PicListV1Model, parent, client) {}

PicListV1::PicListV1(PicListV1Model* model, QWidget* parent, CameraSp* client)
    : PictureListWindow(model, new PicListV1ModelDelegate, parent, client), m_model(model) {}

bool PicListV1::deleteAllPictures() {
    const bool deleted =
        ask(tr("删除全部图片"), &CameraSp::delPicV1, protocol::v1DeleteAll, 0U, std::uint8_t{0});
    qDebug() << "delV1 result ui:" << deleted;
    return deleted;
}

bool PicListV1::deletePicture(int row) {
    const unsigned id = m_model->pictureId(row);
    const unsigned date = m_model->date(row);
    const int gid = m_model->gid(row);
    qDebug() << "dele?:" << row << "  pid" << id << " date:" << date << " gid:" << gid;
    return ask(tr("删除图片 %1").arg(id), &CameraSp::delPicV1, static_cast<std::uint16_t>(id), date,
               static_cast<std::uint8_t>(gid));
}

void PicListV1::downloadPicture(int row) {
    const unsigned id = m_model->pictureId(row);
    ask(tr("下载图片 %1").arg(id), &CameraSp::getTargetPicV1, static_cast<std::uint16_t>(id),
        static_cast<std::uint32_t>(m_model->pictureSize(row)));
}
