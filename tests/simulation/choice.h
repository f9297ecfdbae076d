// Choice of one object of several by a step's number.
#pragma once

#include <QAbstractButton>
#include <QList>

#include <cstdint>
#include <type_traits>

namespace simulation {

/// One of the list, by a number of any size; null if it is empty.
template <typename List>
auto* chosen(const List& list, std::uint32_t choice) {
    using Item = std::remove_pointer_t<typename List::value_type>;
    return list.empty() ? static_cast<Item*>(nullptr)
                        : list.at(static_cast<typename List::size_type>(choice) % list.size());
}

template <typename Widget>
QList<Widget*> usable(const QWidget& window) {
    QList<Widget*> found = window.findChildren<Widget*>();
    found.removeIf([](const Widget* each) { return !each->isVisible() || !each->isEnabled(); });
    return found;
}

template <typename Widget = QAbstractButton>
Widget* named(const QWidget& window, const char* name) {
    return window.findChild<Widget*>(QLatin1String(name));
}

} // namespace simulation
