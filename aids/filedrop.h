// Files dropped on a window become files for an upload.
#pragma once

#include "aids/imagefile.h"

#include <QObject>
#include <QString>

#include <functional>

class QDropEvent;
class QMimeData;
class QWidget;

/// While a file hovers over the window, a tool tip tells what it would become; a box asks for the kind if its
/// name does not tell. Owned by the window. User-interface thread.
class FileDrop final : public QObject {
    Q_OBJECT

public:
    /// mayChoose: whether a file of this kind can be chosen now.
    FileDrop(QWidget* window, std::function<bool(ImageKind)> mayChoose);

signals:
    void chosen(ImageKind kind, const QString& path);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    /// The effect of a drop.
    struct Offer {
        QString path;                  ///< empty: none can be chosen
        std::optional<ImageKind> kind; ///< none: to be asked
        QString hint;
    };
    [[nodiscard]] Offer offerOf(const QMimeData& data) const;
    void hover(QDropEvent& event);
    void drop(QDropEvent& event);
    void ask(const QString& path);

    QWidget* m_window;
    std::function<bool(ImageKind)> m_mayChoose;
};
