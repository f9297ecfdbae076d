// The list of the second generation's pictures.
#pragma once

#include "pictures/picturelistwindow.h"

class PicListV1 final : public PictureListWindow {
    Q_OBJECT

public:
    /// The client stays the caller's and may be null.
    PicListV1(QWidget* parent, CameraSp* client);

private:
    PicListV1(class PicListV1Model* model, QWidget* parent, CameraSp* client);

    bool deleteAllPictures() override;
    bool deletePicture(int row) override;
    void downloadPicture(int row) override;

    PicListV1Model* m_model;
};
