// Acts in windows as a user and reads their texts.
#pragma once

#include "tests/support/debuglog.h"

#include <QAction>
#include <QFileDialog>
#include <QPointer>
#include <QStringList>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <functional>
#include <optional>
#include <stdexcept>
#include <vector>

namespace guitest {

/// The descendant of this kind and name. Throws if there is none.
template <typename Object = QWidget>
Object* find(const QObject& parent, const char* name) {
    auto* const object = parent.findChild<Object*>(QString::fromUtf8(name));
    if (object == nullptr)
        throw std::runtime_error(std::string("nothing of this kind is called ") + name);
    return object;
}

/// A click of the left mouse button into the widget's middle.
void click(const QWidget& window, const char* name);
/// A click whose handler throws. Qt's widgets are built without the code that cleans up while an exception
/// passes: the copies of the mouse event made on the way are lost, which the leak check is told to expect.
void clickThatThrows(const QWidget& window, const char* name);
/// Moves the mouse over each entry of a menu or menu bar that is on the screen.
template <typename Menu>
void hoverEntries(const Menu& menu) {
    QWindow* const screen = menu.window()->windowHandle();
    for (QAction* const entry : menu.actions())
        QTest::mouseMove(screen, menu.mapTo(menu.window(), menu.actionGeometry(entry).center()));
}
/// Chooses a menu entry.
void trigger(const QWidget& window, const char* name);
/// Menu entries that the form marks as exchanging with the camera.
[[nodiscard]] QStringList exchangingEntries(const QWidget& window);
/// Chooses an entry of the menu that the view called listview opens over a row; nothing where there is none.
void chooseForRow(const QWidget& window, int row, const QString& entry);
/// Chooses a file or folder: typed where the dialog has a name field, for selectFile() leaves one alone that
/// has the focus.
void choosePath(QFileDialog& dialog, const QString& path);
/// Answers the file dialog that the window has opened; nothing where there is none.
void chooseFolder(const QWidget& window, const QString& folder);
/// The text of a label, button or line edit.
[[nodiscard]] QString text(const QWidget& window, const char* name);
[[nodiscard]] bool isEnabled(const QWidget& window, const char* name);
/// The status bar's text without and with the time of day of an outcome.
[[nodiscard]] QString statusText(const QWidget& window);
[[nodiscard]] QString statusLine(const QWidget& window);

/// Runs the event loop until the condition holds; false after the time.
bool eventually(const std::function<bool()>& condition, int timeoutMs = 5000);

/// Open windows of one kind, hidden ones not counted.
template <typename Window>
std::vector<Window*> openWindows() {
    std::vector<Window*> found;
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (auto* const window = qobject_cast<Window*>(widget); window != nullptr && window->isVisible())
            found.push_back(window);
    }
    return found;
}

/// Content of a message box.
struct SeenBox {
    QString title;
    QString text;
    int icon;
    QStringList buttons; ///< without that of the details
    QString details;
};

/// Records each message box as long as it lives and presses the given button, or Ok if the box has no such
/// one.
class BoxAnswerer {
public:
    /// A QMessageBox::StandardButton.
    explicit BoxAnswerer(int button);
    BoxAnswerer();

    [[nodiscard]] const std::vector<SeenBox>& seen() const { return m_seen; }
    /// Waits until this many boxes have been seen and answered.
    bool waitFor(std::size_t count, int timeoutMs = 5000);

private:
    void answer();

    int m_button;
    std::vector<SeenBox> m_seen;
    QTimer m_timer;
};

/// Answers file dialogs as long as it lives: chooses the path, or cancels if that is empty.
class FileChooser {
public:
    explicit FileChooser(QString path);

    struct Seen {
        QString title;
        QStringList filters;
        QObject* parent = nullptr;
    };
    [[nodiscard]] const std::vector<Seen>& seen() const { return m_seen; }

private:
    void answer();

    QString m_path;
    std::vector<Seen> m_seen;
    QTimer m_timer;
};

} // namespace guitest
