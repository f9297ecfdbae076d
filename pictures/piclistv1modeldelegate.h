// Paints the rows of the second generation's picture list.
#pragma once

#include "pictures/picturelistdelegate.h"

class PicListV1ModelDelegate final : public PictureListDelegate {
    Q_OBJECT

public:
    explicit PicListV1ModelDelegate(QObject* parent = nullptr) : PictureListDelegate(v1Pictures, parent) {}
};
