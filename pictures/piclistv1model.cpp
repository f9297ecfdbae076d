#include "pictures/piclistv1model.h"

namespace {
constexpr int actionColumn = 1;
} // namespace

unsigned PicListV1Model::date(int row) const {
    return actionPart(row, 0).toUInt();
}

int PicListV1Model::gid(int row) const {
    return actionPart(row, 1).toInt();
}

QString PicListV1Model::actionPart(int row, int part) const {
    return cell(row, actionColumn).split(QLatin1Char('-')).value(part);
}
