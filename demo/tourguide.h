// Driving the window by itself: clicking, waiting, answering dialogs, taking screenshots.
#pragma once

#include <QString>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <stdexcept>

/// A station of the tour failed.
class TourFailure final : public std::runtime_error {
public:
    explicit TourFailure(const QString& what) : std::runtime_error(what.toStdString()) {}
};

/// User-interface thread only. Everything that cannot go on throws TourFailure.
class TourGuide {
public:
    explicit TourGuide(QString folder) : m_folder(std::move(folder)) {}

    [[nodiscard]] const QString& folder() const { return m_folder; }

    /// Prints the next station.
    void say(const QString& text) const;
    /// Saves a picture of the window and the tool tip over it, numbered in order of the calls.
    void screenshot(QWidget& window, const QString& name);

    /// The descendant of this kind and name.
    template <typename Widget>
    static Widget& find(const QWidget& window, const char* name) {
        auto* const found = window.findChild<Widget*>(QString::fromUtf8(name));
        if (found == nullptr)
            throw TourFailure(QStringLiteral("nothing is called ") + QString::fromUtf8(name));
        return *found;
    }
    /// The newest open top-level window of this kind; waits for it.
    template <typename Window>
    static Window& open() {
        Window* found = nullptr;
        waitUntil([&found] { return (found = newest<Window>()) != nullptr; }, "a window opens");
        return *found;
    }

    /// Presses a button or menu entry of this name. Throws when it is disabled.
    static void press(const QWidget& window, const char* name);
    /// Enters a text.
    static void enter(const QWidget& window, const char* name, const QString& text);
    /// Holds the mouse over the widget until its tool tip comes.
    static void hover(QWidget& widget);
    /// Holds a file over the window, takes a screenshot and drops it.
    void dropFile(QWidget& window, const QString& path, const QString& screenshotName);
    static void choose(const QWidget& window, const char* name, const QString& item);

    /// Runs the event loop until the condition holds; throws after the time.
    static void waitUntil(const std::function<bool()>& condition, const char* what, int timeoutMs = 20000);
    static void pause(int ms);
    /// The label's or button's text must become this.
    static void expectText(const QWidget& window, const char* name, const QString& expected);
    static void expect(bool condition, const QString& what);

    /// Does the action and meets the message box that it brings up: its text must be this; a screenshot is
    /// taken under the name (none if it is empty), then the button is pressed.
    void meetBox(const std::function<void()>& action, const QString& text, int button, const QString& name,
                 int timeoutMs = 20000);
    /// Does the action and gives the file dialog that it brings up this file.
    static void giveFile(const std::function<void()>& action, const QString& path);

private:
    template <typename Window>
    static Window* newest() {
        Window* found = nullptr;
        for (QWidget* const widget : topLevelWindows()) {
            if (auto* const window = qobject_cast<Window*>(widget); window != nullptr && window->isVisible())
                found = window;
        }
        return found;
    }
    static QWidgetList topLevelWindows();

    QString m_folder;
    int m_screenshots = 0;
};
