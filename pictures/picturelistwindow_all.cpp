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
#include <functional>

namespace {

struct ListedPicture {
    unsigned id = 0;
    std::uint32_t size = 0;
};

struct Downloaded {
    int count = 0;
    bool stopped = false;
    unsigned failedId = 0; ///< unless all came or the technician stopped

    [[nodiscard]] QString words(int total) const {
        QString counts = PictureListWindow::tr("已下载 %1 张，共 %2 张").arg(count).arg(total);
        if (count == total)
            return counts;
        return stopped ? PictureListWindow::tr("已停止：%1").arg(counts)
                       : PictureListWindow::tr("图片 %1 没有下载：%2").arg(failedId).arg(counts);
    }
    [[nodiscard]] QString outcomeText(const CommandReport&) const {
        return stopped ? PictureListWindow::tr("已停止") : QString();
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
    // Other downloads wait: the folder is the client's.
    const LineTurn::Hold turn = client.takeLine(LineUser::download);
    if (!turn)
        return false;
    const ReportScope scope;
    const std::string folderBefore = client.setPictureFolder(folder);
    generation.download(client, picture.id, picture.size);
    client.setPictureFolder(folderBefore);
    return scope.report().end == CommandEnd::done;
}

/// Until one fails or the technician stops. tell gets the number of each, from 1.
Downloaded downloadPictures(CameraSp& client, const PictureGeneration& generation,
                            const std::vector<ListedPicture>& pictures, const std::string& folder,
                            const std::atomic<bool>& stopped, const std::function<void(int)>& tell) {
    Downloaded result;
    for (const ListedPicture& picture : pictures) {
        tell(result.count + 1);
        if (stopped || !downloadOne(client, generation, picture, folder)) {
            result.stopped = stopped;
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
        if (m_downloadStopped == nullptr) {
            downloadAll();
            return;
        }
        *m_downloadStopped = true;
        if (client() != nullptr)
            client()->endDownload(); // a picture may have no end
    });
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
    const QPointer<PictureListWindow> self(this);
    const QString folder = QFileDialog::getExistingDirectory(this, tr("选择保存图片的文件夹"));
    if (self == nullptr || folder.isEmpty())
        return;
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
    m_downloadStopped = downloading ? std::make_shared<std::atomic<bool>>(false) : nullptr;
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
    if (m_downloadStopped == nullptr)
        return;
    *m_downloadStopped = true;
    showDownloading(false);
    m_ui->bar_download->hide();
}

void PictureListWindow::downloadInto(const QString& folder) {
    const std::vector<ListedPicture> pictures = picturesOf(*m_model);
    if (pictures.empty() || m_downloadStopped != nullptr)
        return; // the list or the button was used beside the question
    const auto total = static_cast<int>(pictures.size());
    showDownloading(true);
    const auto tell = reporter<int>(this, [this, total](int number) {
        showDownload(number - 1, total, tr("正在下载第 %1 张，共 %2 张").arg(number).arg(total));
    });
    const auto download = [pictures, tell, folder = folder.toStdString(), stopped = m_downloadStopped,
                           generation = &m_model->generation()](CameraSp* client) {
        return client != nullptr ? downloadPictures(*client, *generation, pictures, folder, *stopped, tell)
                                 : Downloaded{0, false, pictures.front().id};
    };
    const auto show = [this, total](const Downloaded& result) {
        showDownloading(false);
        showDownload(result.count, total, result.words(total));
    };
    runOnPool(tr("下载全部图片"), this, download, show);
}
