#include "pictures/picturegeneration.h"

#include <QByteArrayView>
#include <QCoreApplication>

#include <array>

using protocol::PictureInfo;

namespace {

QString id(const PictureInfo& picture) {
    return QString::number(picture.id);
}

QString action(const PictureInfo& picture) {
    return QString::number(picture.date) + QLatin1Char('-') + QString::number(picture.gid);
}

QString triggerType(const PictureInfo& picture) {
    return QString::number(picture.triggerType);
}

QString triggerAngle(const PictureInfo& picture) {
    return QString::number(picture.triggerAngle);
}

QString creationTime(const PictureInfo& picture) {
    return QString::number(picture.creationTime);
}

QString fileSize(const PictureInfo& picture) {
    return QString::number(picture.fileSize);
}

QString digest(const PictureInfo& picture) {
    const QByteArrayView bytes(picture.digest.data(), static_cast<qsizetype>(picture.digest.size()));
    return QString::fromLatin1(bytes.toByteArray().toHex());
}

constexpr const char* context = "PictureGeneration";

constexpr std::array<PictureGeneration::Column, 6> originColumns{{
    {QT_TRANSLATE_NOOP("PictureGeneration", "图片id"), 10, &id},
    {QT_TRANSLATE_NOOP("PictureGeneration", "触发方式"), 10, &triggerType},
    {QT_TRANSLATE_NOOP("PictureGeneration", "触发角度"), 10, &triggerAngle},
    {QT_TRANSLATE_NOOP("PictureGeneration", "创建时间"), 10, &creationTime},
    {QT_TRANSLATE_NOOP("PictureGeneration", "文件大小"), 20, &fileSize},
    {QT_TRANSLATE_NOOP("PictureGeneration", "MD5"), 0, &digest},
}};

constexpr std::array<PictureGeneration::Column, 7> v1Columns{{
    {QT_TRANSLATE_NOOP("PictureGeneration", "图片id"), 10, &id},
    {QT_TRANSLATE_NOOP("PictureGeneration", "actionid"), 10, &action},
    {QT_TRANSLATE_NOOP("PictureGeneration", "触发方式"), 10, &triggerType},
    {QT_TRANSLATE_NOOP("PictureGeneration", "触发角度"), 10, &triggerAngle},
    {QT_TRANSLATE_NOOP("PictureGeneration", "创建时间"), 10, &creationTime},
    {QT_TRANSLATE_NOOP("PictureGeneration", "图片大小"), 10, &fileSize},
    {QT_TRANSLATE_NOOP("PictureGeneration", "MD5"), 0, &digest},
}};

} // namespace

constinit const PictureGeneration originPictures{
    .windowTitle = QT_TRANSLATE_NOOP("PictureGeneration", "查看排面图片"),
    .captureButtonName = "btn_takepic",
    .columns = originColumns,
    .timeColumn = 3,
    .sizeColumn = 4,
    .allPictures = protocol::originDeleteAll,
    .record = protocol::originRecordForm,
    .capture = &CameraSp::originCapture,
    .catalogue = &CameraSp::getOriginPicInfos,
    .download = [](CameraSp& client, unsigned id,
                   std::uint32_t size) { client.getOriginTargetPic(static_cast<std::uint8_t>(id), size); },
};

constinit const PictureGeneration v1Pictures{
    .windowTitle = QT_TRANSLATE_NOOP("PictureGeneration", "查看动销图片"),
    .captureButtonName = "btn_capture",
    .columns = v1Columns,
    .timeColumn = 4,
    .sizeColumn = 5,
    .allPictures = protocol::v1DeleteAll,
    .record = protocol::v1RecordForm,
    .capture = &CameraSp::captureV1,
    .catalogue = &CameraSp::getPicInfosV1,
    .download = [](CameraSp& client, unsigned id,
                   std::uint32_t size) { client.getTargetPicV1(static_cast<std::uint16_t>(id), size); },
};

QString PictureGeneration::translatedTitle() const {
    return QCoreApplication::translate(context, windowTitle);
}

QStringList PictureGeneration::columnTitles() const {
    QStringList titles;
    for (const Column& column : columns)
        titles.append(QCoreApplication::translate(context, column.title));
    return titles;
}

PictureInfo PictureGeneration::parse(const protocol::RecordBytes& bytes) const {
    return record.parse(protocol::ByteView(std::span<const std::uint8_t>(bytes.get(), record.size)));
}

QStringList PictureGeneration::cells(const PictureInfo& picture) const {
    QStringList texts;
    texts.reserve(static_cast<qsizetype>(columns.size()));
    for (const Column& column : columns)
        texts.append(column.cell(picture));
    return texts;
}
