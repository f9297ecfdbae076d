// The judge of uploads and files: the camera's and those on disk.
#include "tests/simulation/judge.h"
#include "trace/recording.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <sstream>

using protocol::Bytes;
using protocol::ByteView;

namespace simulation {

namespace {

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isRecording(const QByteArray& content) {
    std::istringstream text(content.toStdString());
    try {
        std::ignore = trace::readRecording(text);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool isReport(const QString& path, const QByteArray& content) {
    if (path.endsWith(QLatin1String(".pdf")))
        return content.startsWith("%PDF") && content.trimmed().endsWith("%%EOF");
    if (path.endsWith(QLatin1String(".html")))
        return content.trimmed().endsWith("</html>");
    return !content.isEmpty();
}

} // namespace

/// Nothing but the file is inside an upload, and nothing but whole requests outside.
void Judge::checkUploadedBytes() {
    const Disturbances& disturbed = m_workplace.disturbances();
    const emulator::CameraRecord& record = m_workplace.camera().record();
    if (!disturbed.toCamera && !disturbed.camera) {
        for (const emulator::UploadRecord& upload : record.uploads) {
            if (!upload.complete || m_brokenOff || disturbed.adapter)
                continue; // interrupted: until its silence the camera takes the next requests for data
            bool known = false;
            for (int file = 0; file < m_workplace.files().size(); ++file) {
                const Bytes content = Workplace::contentOf(static_cast<std::size_t>(file));
                const auto digest =
                    QCryptographicHash::hash(QByteArray(reinterpret_cast<const char*>(content.data()),
                                                        static_cast<qsizetype>(content.size())),
                                             QCryptographicHash::Md5);
                if (Bytes(digest.begin(), digest.end()) != upload.digest)
                    continue;
                known = true;
                const Bytes sent =
                    ByteView(content).range(upload.offset, upload.offset + upload.received.size()).toBytes();
                require(sent == upload.received, "O2: foreign bytes inside an upload");
            }
            require(known, "O1: an upload of no chosen file");
        }
    }
    if (!disturbed.any() && !m_brokenOff) {
        require(record.badFrames == 0, "O2: damaged requests on the line");
        require(record.garbageBytes == 0, "O2: bytes outside any request on the line");
    }
    require(record.appV1.dataPackets == 0, "O2: a data packet of the second protocol");
}

void Judge::checkFiles() {
    for (const QString& folder : m_workplace.obstructions())
        require(QFileInfo(folder).isDir(),
                "O7: a folder is gone: " + QFileInfo(folder).fileName().toStdString());
    static const QRegularExpression pictureName(QStringLiteral("^(\\d+)\\.jpg$"));
    const QString downloads =
        QDir::cleanPath(QDir::current().absoluteFilePath(QLatin1String(Workplace::pictureFolder)));
    for (const QString& folder : {QDir::currentPath(), downloads}) {
        for (const QString& name : QDir(folder).entryList(QDir::Files | QDir::Hidden)) {
            const auto match = pictureName.match(name);
            require(match.hasMatch(), "O7: the file " + name.toStdString());
            if (match.hasMatch())
                checkPicture(QDir(folder).filePath(name), match.captured(1).toUInt());
        }
    }
    require(m_workplace.chosen().contains(downloads) || QDir(downloads).isEmpty(QDir::Files),
            "O7: pictures in a folder that nobody chose");
    checkSavedFiles();
}

/// Whatever happens to the line, a file has the bytes that came.
void Judge::checkHeardPicture(const QString& path, std::optional<unsigned int> id) {
    const QByteArray bytes = contentOf(path);
    const auto& pictures = m_answers.pictures();
    const bool heard = std::any_of(pictures.begin(), pictures.end(), [&](const auto& picture) {
        return (!id || picture.first == (*id & 0xFFU)) && Bytes(bytes.begin(), bytes.end()) == picture.second;
    });
    require(heard, "O7: " + QFileInfo(path).fileName().toStdString() +
                       " has other bytes than any picture that came");
}

/// Without an id, of any picture.
void Judge::checkPicture(const QString& path, std::optional<unsigned int> id) {
    checkHeardPicture(path, id);
    const Disturbances& disturbed = m_workplace.disturbances();
    if (disturbed.toTool || disturbed.late || disturbed.camera)
        return;
    if (disturbed.adapter) // a download that fails in the port leaves the rest of its picture to the next
        return;
    // A capture whose picture is not known in time goes on with what it has; V1 writes whatever comes, and an
    // offset can make the request another command.
    if (id == 0U &&
        (m_pictureOffset || m_workplace.camera().settings().type == emulator::CameraType::salesDynamic))
        return;
    const QByteArray bytes = contentOf(path);
    const auto& pictures = m_workplace.pictures();
    const bool whole = std::any_of(pictures.begin(), pictures.end(), [&](const TakenPicture& picture) {
        return (!id || (picture.id & 0xFFU) == *id) && Bytes(bytes.begin(), bytes.end()) == picture.jpeg;
    });
    require(whole,
            "O7: " + QFileInfo(path).fileName().toStdString() + " is no picture of the camera with this id");
}

/// Around the working directory is nothing but what was there, what was chosen and the dialogs' settings.
void Judge::checkSavedFiles() {
    const QDir root(QFileInfo(QDir::currentPath()).path());
    for (QDirIterator each(root.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
         each.hasNext();) {
        const QString path = each.next();
        const QString folder = QFileInfo(path).path();
        if (QFileInfo(path) == QFileInfo(QLatin1String(Workplace::filePort)))
            continue;
        const auto file = m_workplace.files().indexOf(path);
        if (file >= 0) {
            const Bytes content = Workplace::contentOf(static_cast<std::size_t>(file));
            const QByteArray now = contentOf(path);
            require(Bytes(now.begin(), now.end()) == content, "O7: a chosen image has changed");
        }
        if (file >= 0 || path.endsWith(QLatin1String("QtProject.conf")) || folder == QDir::currentPath() ||
            QFileInfo(folder).fileName() == QFileInfo(QLatin1String(Workplace::pictureFolder)).fileName())
            continue;
        const std::string name = root.relativeFilePath(path).toStdString();
        require(m_workplace.chosen().contains(path), "O7: nobody chose " + name);
        if (path.endsWith(QLatin1String(".jpg")))
            checkPicture(path, std::nullopt);
        else if (path.endsWith(QLatin1String(".rec")))
            require(isRecording(contentOf(path)), "O7: no recording in " + name);
        else
            require(isReport(path, contentOf(path)), "O7: no report in " + name);
    }
}

} // namespace simulation
