// The list of the first generation's pictures.
#pragma once

#include "pictures/picturelistwindow.h"

class PicList final : public PictureListWindow {
    Q_OBJECT

public:
    /// The client stays the caller's and may be null.
    PicList(QWidget* parent, CameraSp* client);

private:
    PicList(class PicListModel* model, QWidget* parent, CameraSp* client);

    bool deleteAllPictures() override;
    bool deletePicture(int row) override;
    void downloadPicture(int row) override;

    PicListModel* m_model;
};
