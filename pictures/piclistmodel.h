// The rows of the first generation's picture list.
#pragma once

#include "pictures/picturelistmodel.h"

class PicListModel final : public PictureListModel {
    Q_OBJECT

public:
    explicit PicListModel(QObject* parent = nullptr) : PictureListModel(originPictures, parent) {}
};
