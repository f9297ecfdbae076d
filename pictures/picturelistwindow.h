// The list window of the pictures stored on the camera.
#pragma once

#include "linkaccess/clientborrower.h"
#include "pictures/picturegeneration.h"

#include <QPersistentModelIndex>
#include <QPointer>
#include <QWidget>

#include <memory>
#include <vector>

class ImgDialog;
class PictureListDelegate;
class PictureListModel;
/// Shared by a window and its job that downloads all pictures.
struct PictureDownloadControl;

namespace Ui {
class PictureListWindow;
}

/// Lists, sorts, deletes, takes and views pictures. Base of the two generations' windows, which bring the
/// commands whose arguments differ. A window of its own that deletes itself when it is closed; the parent
/// remembers its size, and with it the widths of the columns, for the next one.
///
/// User-interface thread only; every camera command blocks for one exchange, viewing for one download.
/// No event loop runs inside a slot: menu and message box report back, so that the window may be closed, or
/// the list be filled anew, while they are open.
class PictureListWindow : public QWidget, public ClientBorrower {
    Q_OBJECT

public:
    ~PictureListWindow() override;

protected:
    /// The window takes the model and the delegate over; the client stays the caller's and may be null.
    PictureListWindow(PictureListModel* model, PictureListDelegate* delegate, QWidget* parent,
                      CameraSp* client);

    void clientChanged() override;
    void closeEvent(QCloseEvent* event) override;

    virtual bool deleteAllPictures() = 0;
    virtual bool deletePicture(int row) = 0;
    /// Into the working directory.
    virtual void downloadPicture(int row) = 0;

private:
    void refresh();
    void deleteAll();
    void takePicture();
    void showMenu(const QPoint& position);
    void showMenuAtRow();
    /// False if the camera did not delete it.
    bool deleteRow(const QPersistentModelIndex& index);
    /// Asks before it deletes.
    void askToDelete(std::vector<QPersistentModelIndex> rows);
    /// One after the other, with events in between, until one is not deleted.
    void deleteNext();
    void viewChosen();
    /// From top to bottom.
    [[nodiscard]] std::vector<QPersistentModelIndex> chosen() const;
    /// The row of the keyboard if it is chosen, else the first chosen one; invalid without one.
    [[nodiscard]] QPersistentModelIndex chosenToView() const;
    void connectList();
    void connectKeys();
    void summarize();
    void viewRow(const QPersistentModelIndex& index);

    /// A viewer and the picture that it shows.
    struct View {
        QPointer<ImgDialog> dialog;
        QPersistentModelIndex index; ///< invalid once the list is read again
        unsigned id = 0;
    };
    /// Downloads the picture and shows it in the view's dialog, or in a new one if there is none.
    void viewIn(int row, const std::shared_ptr<View>& view);
    void openViewer(const std::shared_ptr<View>& view);
    /// -1: the picture is not in the list any more.
    [[nodiscard]] int rowOf(const View& view) const;
    void viewNeighbour(int step, const std::shared_ptr<View>& view);
    void enableNeighbours(const View& view) const;

    // --- all pictures (picturelistwindow_all.cpp) ---
    void connectAll();
    /// The picture under way ends as well.
    void stopDownload();
    void copyList() const;
    /// Asks for the folder, and before files are replaced. While pictures come, the button stops them.
    void downloadAll();
    void askToReplace(const QString& folder);
    void downloadInto(const QString& folder);
    void showDownloading(bool downloading);
    void showDownload(int count, int total, const QString& text);

    void reload();
    /// Runs the action later, if the window is then still visible and free to use the client.
    template <typename Action>
    void later(Action action);

    std::unique_ptr<Ui::PictureListWindow> m_ui;
    PictureListModel* m_model;
    std::vector<QPersistentModelIndex> m_toDelete;
    std::shared_ptr<PictureDownloadControl> m_download; ///< non-null while pictures come
};
