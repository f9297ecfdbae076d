#include "aids/imagefile.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <initializer_list>

namespace {

QString translated(const char* text) {
    return QCoreApplication::translate("ImageFile", text);
}

bool namesOneOf(const QString& name, std::initializer_list<const char*> words) {
    return std::any_of(words.begin(), words.end(), [&name](const char* word) {
        return name.contains(QLatin1String(word), Qt::CaseInsensitive);
    });
}

bool fits(ImageKind kind, const QString& name) {
    switch (kind) {
    case ImageKind::app:
        return namesOneOf(name, {"app"});
    case ImageKind::fireware:
        return namesOneOf(name, {"system", "fireware", "firmware", "linux", "rootfs", "kernel"});
    case ImageKind::model:
        return namesOneOf(name, {"model", ".tflite", ".onnx", ".rknn"});
    }
    return false;
}

} // namespace

QString imageKindName(ImageKind kind) {
    switch (kind) {
    case ImageKind::app:
        return translated("app固件");
    case ImageKind::fireware:
        return translated("系统固件");
    case ImageKind::model:
        return translated("模型文件");
    }
    return {};
}

std::optional<ImageKind> imageKindOf(const QString& path) {
    const QString name = QFileInfo(path).fileName();
    std::optional<ImageKind> found;
    for (const ImageKind kind : allImageKinds) {
        if (!fits(kind, name))
            continue;
        if (found)
            return std::nullopt;
        found = kind;
    }
    return found;
}

QString md5Of(const QString& path) {
    QFile file(path);
    QCryptographicHash md5(QCryptographicHash::Md5);
    if (!file.open(QIODevice::ReadOnly) || !md5.addData(&file))
        return {};
    return QString::fromLatin1(md5.result().toHex());
}

QString imageFacts(const QString& path, const QString& md5) {
    if (md5.isEmpty())
        return path + QLatin1Char('\n') + translated("文件无法读取，请重新选择");
    const QFileInfo file(path);
    return QStringList{
        path,
        translated("大小：%1 字节").arg(file.size()),
        translated("修改时间：%1").arg(file.lastModified().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))),
        QStringLiteral("MD5：%1").arg(md5),
    }
        .join(QLatin1Char('\n'));
}
