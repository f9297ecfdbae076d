// Shows one downloaded picture.
#pragma once

#include "pictures/picturezoom.h"

#include <QDialog>

#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

class QAction;
class QToolButton;

namespace Ui {
class ImgDialog;
}

/// Deletes itself when it is closed. User-interface thread.
class ImgDialog final : public QDialog {
    Q_OBJECT

public:
    explicit ImgDialog(QWidget* parent = nullptr);
    ~ImgDialog() override;

    /// Loads the picture and opens the dialog. A name without suffix finds the file of any known image
    /// format; a picture that is missing or broken is said so. The file may change or go afterwards.
    void showPicture(const QString& name);
    /// The same with the content of a file.
    void showFile(const QByteArray& file, const QString& fileName);
    /// Offers the previous and the next picture; a new dialog offers neither.
    void setNeighbours(bool previous, bool next);

signals:
    /// step: -1 for the picture before this one, 1 for the one after it. A slot shows it by showPicture.
    void neighbourWanted(int step);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    /// Condition of an action.
    enum class Need { previous, next, zoom, zoomed, picture };
    struct Command;
    [[nodiscard]] static std::span<const Command> commands();

    void addActions();
    QToolButton* addButton(const Command& command, QAction* action);
    [[nodiscard]] bool has(Need need) const;
    void enableActions();
    void placeBar();

    void load(const QString& name);
    void showLoaded();
    void zoom(int steps, QPointF anchor = {});
    void fit();
    /// Moves the section over the picture.
    void pan(double x, double y);
    void showSection();

    void saveAs();
    void save(const QByteArray& file, const QString& path);
    void copy();

    std::unique_ptr<Ui::ImgDialog> m_ui;
    QWidget* m_bar; ///< the buttons, over the picture
    std::vector<std::pair<QAction*, Need>> m_actions;
    std::vector<QAction*> m_menuActions;
    bool m_hasPrevious = false;
    bool m_hasNext = false;

    PictureZoom m_zoom;
    QByteArray m_file; ///< content as it was decoded
    QString m_fileName;
    int m_wheelAngle = 0;             ///< eighths of a degree, less than a notch
    std::optional<QPointF> m_dragged; ///< last place of the mouse
};
