#include "cli/pictures.h"

#include "service/picturetaking.h"
#include "service/readings.h"
#include "service/reportwords.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QSaveFile>
#include <QTemporaryDir>

#include <algorithm>

namespace cli {

namespace {

using protocol::PictureInfo;

QString pictureWords(const char* text) {
    return QCoreApplication::translate("Pictures", text);
}

bool hasCatalogue(const CommandContext& context) {
    return protocol::infoOf(context.options.type).pictures != protocol::PictureCommands::json;
}

Result withoutCatalogue() {
    return failure(ExitCode::usage, pictureWords("该类型没有图片列表，请用 capture"));
}

struct Catalogue {
    CommandReport report;
    std::vector<PictureInfo> pictures;
};

Catalogue readPictures(const CommandContext& context) {
    const ReportScope scope;
    std::vector<PictureInfo> pictures = service::readCatalogue(context.camera, context.options.type);
    return {scope.report(), std::move(pictures)};
}

/// Replaces the file by the downloaded one as a whole. Empty, or what failed.
QString moveTo(const QString& downloaded, const QString& path) {
    QFile source(downloaded);
    QSaveFile target(path);
    if (!source.open(QIODevice::ReadOnly))
        return pictureWords("图片没有写入 %1：%2").arg(path, source.errorString());
    const QByteArray content = source.readAll();
    const bool written = target.open(QIODevice::WriteOnly) && target.write(content) == content.size() &&
                         target.flush() && target.commit(); // commit does not see that flushing fails
    if (!written)
        return pictureWords("图片没有写入 %1：%2").arg(path, target.errorString());
    return {};
}

Result finished(const QString& downloaded, const QString& path) {
    if (const QString error = moveTo(downloaded, path); !error.isEmpty())
        return failure(ExitCode::file, error);
    return {ExitCode::done,
            {{"file", path}, {"bytes", QFileInfo(path).size()}},
            pictureWords("图片已写入 %1，%2 字节").arg(path).arg(QFileInfo(path).size()),
            {}};
}

QString outputPath(const CommandContext& context) {
    const std::string& file = context.options.command.file;
    return context.fileFor(file.empty() ? QStringLiteral("picture.jpg") : QString::fromStdString(file));
}

/// A folder that can be written is asked for before the camera is.
QString unwritable(const QString& folder) {
    const QFileInfo info(folder.isEmpty() ? QStringLiteral(".") : folder);
    return info.isDir() && info.isWritable()
               ? QString()
               : pictureWords("文件夹不存在或不能写入：%1").arg(info.filePath());
}

template <typename Download>
Result downloadTo(const CommandContext& context, const QString& path, Download download) {
    if (const QString error = unwritable(QFileInfo(path).path()); !error.isEmpty())
        return failure(ExitCode::file, error);
    const QTemporaryDir folder;
    context.camera.setPictureFolder(folder.path().toStdString());
    const service::PictureResult result = download(folder.path());
    if (!result.succeeded())
        return failureOf(pictureWords("图片没有下载"),
                         result.report.succeeded() ? CommandReport{CommandEnd::unusable} : result.report);
    return finished(result.file, path);
}

Result capture(const CommandContext& context) {
    return downloadTo(context, outputPath(context), [&](const QString& folder) {
        return service::takePicture(context.camera, context.options.type, folder);
    });
}

Result list(const CommandContext& context) {
    const service::ReadValue value =
        service::readingOf("pictures")->read(context.camera, context.options.type);
    if (value.verdict == service::Verdict::failed)
        return failureOf(pictureWords("读取图片列表"), {value.end});
    QStringList lines{value.text};
    const QJsonArray pictures = value.value.toArray();
    for (const auto& picture : pictures)
        lines.append(pictureWords("%1  %2 字节  时间 %3  MD5 %4")
                         .arg(picture[QLatin1String("id")].toInt())
                         .arg(picture[QLatin1String("size")].toInteger())
                         .arg(picture[QLatin1String("time")].toInteger())
                         .arg(picture[QLatin1String("md5")].toString()));
    return {ExitCode::done, {{"pictures", value.value}}, lines.join(QLatin1Char('\n')), {}};
}

/// Runs the work with the picture of the command's id.
template <typename Work>
Result withPicture(const CommandContext& context, Work work) {
    const Catalogue catalogue = readPictures(context);
    if (!catalogue.report.succeeded())
        return failureOf(pictureWords("读取图片列表"), catalogue.report);
    const std::uint16_t id = context.options.command.picture;
    const auto found = std::find_if(catalogue.pictures.begin(), catalogue.pictures.end(),
                                    [id](const PictureInfo& picture) { return picture.id == id; });
    if (found == catalogue.pictures.end())
        return failure(ExitCode::refused, pictureWords("摄像头里没有编号为 %1 的图片").arg(id));
    return work(*found);
}

Result get(const CommandContext& context) {
    return withPicture(context, [&](const PictureInfo& picture) {
        return downloadTo(context, outputPath(context), [&](const QString& folder) {
            return service::downloadPicture(context.camera, context.options.type, picture, folder);
        });
    });
}

QString downloadFolder(const CommandContext& context) {
    const QString folder = QString::fromStdString(context.options.command.folder);
    return context.severalPorts ? QDir(folder).filePath(context.portName()) : folder;
}

Result getAll(const CommandContext& context) {
    const QString folder = downloadFolder(context);
    if (!QDir().mkpath(folder))
        return failure(ExitCode::file, pictureWords("文件夹不存在或不能写入：%1").arg(folder));
    if (const QString error = unwritable(folder); !error.isEmpty())
        return failure(ExitCode::file, error);
    const Catalogue catalogue = readPictures(context);
    if (!catalogue.report.succeeded())
        return failureOf(pictureWords("读取图片列表"), catalogue.report);
    context.camera.setPictureFolder(folder.toStdString());
    Result result;
    QJsonArray files;
    QStringList lines;
    for (const PictureInfo& picture : catalogue.pictures) {
        context.tell(pictureWords("图片 %1，第 %2 张，共 %3 张")
                         .arg(picture.id)
                         .arg(files.size() + 1)
                         .arg(catalogue.pictures.size()));
        const service::PictureResult each =
            service::downloadPicture(context.camera, context.options.type, picture, folder);
        if (!each.succeeded()) {
            result = failureOf(pictureWords("图片 %1 没有下载").arg(picture.id), each.report);
            break;
        }
        files.append(each.file);
        lines.append(each.file);
    }
    lines.append(pictureWords("已下载 %1 张，共 %2 张").arg(files.size()).arg(catalogue.pictures.size()));
    result.fields.insert(QLatin1String("files"), files);
    result.text = lines.join(QLatin1Char('\n'));
    return result;
}

Result remove(const CommandContext& context, const std::optional<PictureInfo>& picture) {
    const ReportScope scope;
    std::ignore = service::deletePicture(context.camera, context.options.type, picture);
    if (!scope.report().succeeded())
        return failureOf(pictureWords("删除图片"), scope.report());
    return {ExitCode::done, {}, pictureWords("图片已删除"), {}};
}

} // namespace

Result runPictureCommand(const CommandContext& context) {
    const Verb verb = context.options.command.verb;
    if (verb == Verb::capture)
        return capture(context);
    if (!hasCatalogue(context))
        return withoutCatalogue();
    switch (verb) {
    case Verb::getPicture:
        return get(context);
    case Verb::getAllPictures:
        return getAll(context);
    case Verb::deletePicture:
        return withPicture(context, [&](const PictureInfo& picture) { return remove(context, picture); });
    case Verb::deleteAllPictures:
        return remove(context, std::nullopt);
    default:
        return list(context);
    }
}

} // namespace cli
