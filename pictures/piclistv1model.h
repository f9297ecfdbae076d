// The rows of the second generation's picture list.
#pragma once

#include "pictures/picturelistmodel.h"

class PicListV1Model final : public PictureListModel {
    Q_OBJECT

public:
    explicit PicListV1Model(QObject* parent = nullptr) : PictureListModel(v1Pictures, parent) {}

    /// The two parts of the row's "actionid"; 0 for a row that is not there.
    [[nodiscard]] unsigned date(int row) const;
    [[nodiscard]] int gid(int row) const;

private:
    /// "<date>-<gid>"
    [[nodiscard]] QString actionPart(int row, int part) const;
};
