// Paints the rows of the first generation's picture list.
#pragma once

#include "pictures/picturelistdelegate.h"

class PicListModelDelegate final : public PictureListDelegate {
    Q_OBJECT

public:
    explicit PicListModelDelegate(QObject* parent = nullptr) : PictureListDelegate(originPictures, parent) {}
};
