// The windows that the main window has opened, and the client lent to those that use it.
#pragma once

#include <QPointer>
#include <QWidget>

#include <vector>

class CameraSp;
class ClientBorrower;

/// User-interface thread only. A window that is destroyed is forgotten by itself.
class OpenWindows {
public:
    /// The borrower is the window itself, or null for a window that uses no client.
    void add(QWidget* window, ClientBorrower* borrower);
    /// Lends the client to every borrower; null takes it back.
    void attachClient(CameraSp* client);
    /// Disables (false) and enables the borrowers while somebody else uses the client for a longer time.
    void setExchangeAllowed(bool allowed);
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
