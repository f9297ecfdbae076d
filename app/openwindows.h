// The windows that the main window opened, and the client lent to them.
#pragma once

#include <QPointer>
#include <QWidget>

#include <vector>

class CameraSp;
class ClientBorrower;

/// User-interface thread. Destroyed windows drop out by themselves.
class OpenWindows {
public:
    /// borrower: the window itself, or null if it uses no client.
    void add(QWidget* window, ClientBorrower* borrower);
    /// Attaches the client to every borrower; null detaches it.
    void attachClient(CameraSp* client);
    /// Disables (false) or enables all borrowers.
    void setExchangeAllowed(bool allowed);
    /// The visible window of this kind, or null.
    template <typename Window>
    [[nodiscard]] Window* opened() const {
        for (const Entry& entry : m_entries) {
            auto* const window = qobject_cast<Window*>(entry.window.data());
            if (window != nullptr && window->isVisible())
                return window;
        }
        return nullptr;
    }
    void closeAll();
    void deleteAll();

private:
    struct Entry {
        QPointer<QWidget> window;
        ClientBorrower* borrower = nullptr;
    };

    template <typename Action>
    void forEachBorrower(Action action);
    void forgetDestroyed();

    std::vector<Entry> m_entries;
    bool m_exchangeAllowed = true;
};
