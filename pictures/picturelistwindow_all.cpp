// The whole list at once: into the clipboard, or its pictures into a folder.
#include "pictures/localpicture.h"
#include "pictures/picturelistmodel.h"
#include "pictures/picturelistwindow.h"
#include "ui_picturelistwindow.h"

#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMessageBox>

#include <algorithm>
#include <atomic>
#include <functional>

struct PictureDownloadControl {
    std::atomic<bool> stopped{false};
    std::atomic<bool> hasLine{false};
};

namespace {

struct ListedPicture {
    unsigned id = 0;
    std::uint32_t size = 0;
};

struct Downloaded {
    int count = 0;
    bool stopped = false;
    bool lineRefused = false; ///< no exchange took place, which would have a report
    unsigned failedId = 0;    ///< unless all came or the technician stopped

    [[nodiscard]] QString words(int total) const {
        QString counts = PictureListWindow::tr("已下载 %1 张，共 %2 张").arg(count).arg(total);
        if (count == total)
            return counts;
        return stopped ? PictureListWindow::tr("已停止：%1").arg(counts)
                       : PictureListWindow::tr("图片 %1 没有下载：%2").arg(failedId).arg(counts);
    }
    [[nodiscard]] QString outcomeText(const CommandReport& report) const {
        if (stopped)
            return PictureListWindow::tr("已停止");
        return lineRefused && report.succeeded() ? PictureListWindow::tr("线路正忙，请稍后再试") : QString();
    }
};

std::vector<ListedPicture> picturesOf(const PictureListModel& model) {
    std::vector<ListedPicture> pictures;
    for (int row = 0; row < model.rowCount(); ++row)
        pictures.push_back({model.pictureId(row), static_cast<std::uint32_t>(model.pictureSize(row))});
    return pictures;
}

/// True if the picture is in the folder now.
bool downloadOne(CameraSp& client, const PictureGeneration& generation, const ListedPicture& picture,
                 const std::string& folder) {
    const ReportScope scope;
    const std::string folderBefore = client.setPictureFolder(folder);
    generation.download(client, picture.id, picture.size);
    client.setPictureFolder(folderBefore);
    return scope.report().end == CommandEnd::done;
}

/// Until one fails or the technician stops. tell gets the number of each, from 1.
Downloaded downloadPictures(CameraSp& client, const PictureGeneration& generation,
                            const std::vector<ListedPicture>& pictures, const std::string& folder,
                            PictureDownloadControl& control, const std::function<void(int)>& tell) {
    Downloaded result;
    for (const ListedPicture& picture : pictures) {
        tell(result.count + 1);
        // Other downloads wait: the folder is the client's.
        const LineTurn::Hold turn = client.takeLine(LineUser::download);
        control.hasLine = static_cast<bool>(turn);
        const bool done = turn && !control.stopped && downloadOne(client, generation, picture, folder);
        control.hasLine = false;
        if (!done) {
            result.stopped = control.stopped;
            result.lineRefused = !turn;
            result.failedId = picture.id;
            break;
        }
        ++result.count;
    }
    return result;
}

} // namespace

void PictureListWindow::connectAll() {
    connect(m_ui->btn_copy_list, &QToolButton::clicked, this, &PictureListWindow::copyList);
    connect(m_ui->btn_download_all, &QToolButton::clicked, this, [this] {
        if (m_download == nullptr)
            downloadAll();
        else
            stopDownload();
    });
}

void PictureListWindow::stopDownload() {
    if (m_download == nullptr)
        return;
    m_download->stopped = true;
    if (m_download->hasLine && client() != nullptr)
        client()->endDownload(); // a picture may have no end
}

void PictureListWindow::copyList() const {
    QStringList lines{m_model->generation().columnTitles().join(QLatin1Char('\t'))};
    for (int row = 0; row < m_model->rowCount(); ++row)
        lines.append(m_model->rowTexts(row).join(QLatin1Char('\t')));
    QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

void PictureListWindow::downloadAll() {
    if (m_model->rowCount() == 0) {
        showDownload(0, 1, tr("列表是空的，请先刷新列表"));
        return;
    }
    auto* const dialog = new QFileDialog(this, tr("选择保存图片的文件夹"));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this, &PictureListWindow::askToReplace);
    dialog->open();
}

void PictureListWindow::askToReplace(const QString& folder) {
    const std::vector<ListedPicture> pictures = picturesOf(*m_model);
    const auto present = std::count_if(pictures.begin(), pictures.end(), [&](const ListedPicture& picture) {
        return QFile::exists(QDir(folder).filePath(localPictureName(picture.id)));
    });
    if (present == 0) {
        downloadInto(folder);
        return;
    }
    auto* const box = new QMessageBox(QMessageBox::Question, tr("替换图片"),
                                      tr("文件夹里已有 %1 张同名图片，要替换吗？").arg(present),
                                      QMessageBox::Yes | QMessageBox::No, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QMessageBox::finished, this, [this, folder](int answer) {
        if (answer == QMessageBox::Yes)
            downloadInto(folder);
    });
    box->open();
}

void PictureListWindow::showDownloading(bool downloading) {
    m_download = downloading ? std::make_shared<PictureDownloadControl>() : nullptr;
    m_ui->btn_download_all->setText(downloading ? tr("停止下载") : tr("下载全部"));
}

void PictureListWindow::showDownload(int count, int total, const QString& text) {
    m_ui->bar_download->setRange(0, total);
    m_ui->bar_download->setValue(count);
    m_ui->bar_download->setFormat(text);
    m_ui->bar_download->show();
}

/// Results of an earlier link do not come.
void PictureListWindow::clientChanged() {
    m_toDelete.clear();
    if (m_download == nullptr)
        return;
    stopDownload();
    showDownloading(false);
    m_ui->bar_download->hide();
}

void PictureListWindow::downloadInto(const QString& folder) {
    const std::vector<ListedPicture> pictures = picturesOf(*m_model);
    if (pictures.empty() || m_download != nullptr)
        return; // the list or the button was used beside the question
    const auto total = static_cast<int>(pictures.size());
    showDownloading(true);
    const auto tell = reporter<int>(this, [this, total](int number) {
        showDownload(number - 1, total, tr("正在下载第 %1 张，共 %2 张").arg(number).arg(total));
    });
    const auto download = [pictures, tell, folder = folder.toStdString(), control = m_download,
                           generation = &m_model->generation()](CameraSp* client) {
        return client != nullptr ? downloadPictures(*client, *generation, pictures, folder, *control, tell)
                                 : Downloaded{0, false, false, pictures.front().id};
    };
    const auto show = [this, total](const Downloaded& result) {
        showDownloading(false);
        showDownload(result.count, total, result.words(total));
    };
    runOnPool(tr("下载全部图片"), this, download, show);
}
