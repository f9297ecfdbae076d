// Fixture for settings windows: main window, open link, actions, texts.
#pragma once

#include "link/camerasp.h"
#include "linkaccess/clientborrower.h"
#include "tests/support/debuglog.h"
#include "tests/support/testclock.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QLabel>
#include <QPointer>
#include <QTest>
#include <QThreadPool>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

/// A child by its object name. A missing one ends the test program.
template <typename Widget>
Widget* part(const QWidget* window, const QString& name) {
    auto* const found = window->findChild<Widget*>(name);
    if (found == nullptr)
        qFatal("no %s in the window", qPrintable(name));
    return found;
}

inline std::string textOf(const QWidget* window, const QString& label) {
    return part<QLabel>(window, label)->text().toStdString();
}

inline void press(const QWidget* window, const QString& button) {
    part<QAbstractButton>(window, button)->click();
}

using Lines = std::vector<std::string>;

/// The window's only timer.
inline QTimer* timerOf(const QWidget* window) {
    const auto timers = window->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    return timers.size() == 1 ? timers.front() : nullptr;
}

/// One second of a countdown passes.
inline void tick(const QWidget* window) {
    ASSERT_NE(timerOf(window), nullptr);
    ASSERT_TRUE(QMetaObject::invokeMethod(timerOf(window), "timeout"));
}

/// Opens and closes a link and the windows that borrow it, as the main window does. Derived fixtures choose
/// the port and end the link before the camera.
class DialogTest : public testing::Test {
protected:
    struct Borrower {
        QPointer<QWidget> window;
        ClientBorrower* borrower;
    };

    void openLink(const std::string& port) {
        m_client = std::make_unique<CameraSp>(port, 460800U, m_clock);
        for (auto& [window, borrower] : m_borrowers) {
            if (window != nullptr)
                borrower->attachClient(m_client.get());
        }
    }

    /// Detach, stop, wait, delete.
    void closeLink() {
        for (auto& [window, borrower] : m_borrowers) {
            if (window != nullptr)
                borrower->attachClient(nullptr);
        }
        if (m_client == nullptr)
            return;
        m_client->requestStop();
        m_client->waitUntilUnused();
        m_client.reset();
    }

    void endLinkAndWindows() {
        closeLink();
        m_main.reset();
        settle();
    }

    template <typename Window>
    Window* open() {
        auto* const window = new Window(m_main.get(), m_client.get());
        window->setWindowFlag(Qt::Window);
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->show();
        m_borrowers.push_back({window, window});
        return window;
    }

    /// Waits until the pool is idle and its results are shown or dropped.
    static void settle() {
        QThreadPool::globalInstance()->waitForDone();
        QTest::qWait(20);
    }

    TestClock m_clock;
    std::unique_ptr<CameraSp> m_client;
    std::unique_ptr<QWidget> m_main = std::make_unique<QWidget>();
    std::vector<Borrower> m_borrowers;
    DebugLog m_debug;
};
