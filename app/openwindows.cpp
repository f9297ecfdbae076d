#include "app/openwindows.h"

#include "linkaccess/clientborrower.h"
#include "linkaccess/focuskeeper.h"

#include <QScreen>

#include <utility>

namespace {

constexpr int usualTextHeight = 20; // pixels, at most; the forms are drawn for it

/// Larger texts get a larger window, as far as the screen allows.
void fitToTexts(QWidget& window) {
    const int height = window.fontMetrics().height();
    if (height <= usualTextHeight)
        return;
    const QSize fitting = window.size() * (static_cast<double>(height) / usualTextHeight);
    window.resize(fitting.boundedTo(window.screen()->availableSize()).expandedTo(window.size()));
}

} // namespace

void OpenWindows::add(QWidget* window, ClientBorrower* borrower) {
    forgetDestroyed();
    m_entries.push_back({window, borrower});
    fitToTexts(*window);
    if (borrower != nullptr)
        borrower->setExchangeAllowed(m_exchangeAllowed);
}

void OpenWindows::attachClient(CameraSp* client) {
    forEachBorrower([client](const Entry& entry) { entry.borrower->attachClient(client); });
}

void OpenWindows::setExchangeAllowed(bool allowed) {
    m_exchangeAllowed = allowed;
    forEachBorrower([allowed](const Entry& entry) {
        FocusKeeper::of(entry.window).keep([&] { entry.borrower->setExchangeAllowed(allowed); });
    });
}

void OpenWindows::closeAll() {
    const std::vector<Entry> entries = m_entries;
    for (const Entry& entry : entries) {
        if (entry.window != nullptr)
            entry.window->close();
    }
}

void OpenWindows::deleteAll() {
    // Deleting a window may delete others and call its owner.
    const std::vector<Entry> entries = std::exchange(m_entries, {});
    for (const Entry& entry : entries)
        delete entry.window.data();
}

template <typename Action>
void OpenWindows::forEachBorrower(Action action) {
    forgetDestroyed();
    for (const Entry& entry : m_entries) {
        if (entry.borrower != nullptr)
            action(entry);
    }
}

void OpenWindows::forgetDestroyed() {
    std::erase_if(m_entries, [](const Entry& entry) { return entry.window == nullptr; });
}
