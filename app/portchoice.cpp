#include "app/portchoice.h"

#include <algorithm>

namespace {

/// The digits at the position, leading zeros skipped.
QStringView digitsAt(const QString& text, qsizetype& position) {
    while (position < text.size() && text[position] == u'0')
        ++position;
    const qsizetype first = position;
    while (position < text.size() && text[position].isDigit())
        ++position;
    return QStringView(text).sliced(first, position - first);
}

} // namespace

bool portNameLess(const QString& left, const QString& right) {
    qsizetype l = 0;
    qsizetype r = 0;
    while (l < left.size() && r < right.size()) {
        if (left[l].isDigit() && right[r].isDigit()) {
            const QStringView number = digitsAt(left, l);
            const QStringView other = digitsAt(right, r);
            if (number.size() != other.size())
                return number.size() < other.size();
            if (const int order = number.compare(other); order != 0)
                return order < 0;
        } else {
            if (left[l] != right[r])
                return left[l] < right[r];
            ++l;
            ++r;
        }
    }
    return left.size() - l < right.size() - r;
}

void PortChoice::setSource(Source ports) {
    m_source = std::move(ports);
}

void PortChoice::fill() {
    clear();
    addEntries(m_source());
}

void PortChoice::refill() {
    const auto byName = [](const PortEntry& left, const PortEntry& right) {
        return portNameLess(left.name, right.name);
    };
    std::vector<PortEntry> present = m_source();
    if (std::is_permutation(present.begin(), present.end(), m_ports.begin(), m_ports.end()))
        return;
    std::stable_sort(present.begin(), present.end(), byName);
    const QString chosen = currentText();
    {
        // One change at the end, not one per step.
        const QSignalBlocker blocker(this);
        // Entries of others stay.
        for (const PortEntry& port : m_ports)
            removeItem(findText(port.name));
        addEntries(present);
        setCurrentIndex(std::max(0, findText(chosen)));
    }
    if (currentText() != chosen)
        emit currentTextChanged(currentText());
}

void PortChoice::choose(const QString& port) {
    if (findText(port) < 0)
        addItem(port);
    setCurrentText(port);
}

void PortChoice::showPopup() {
    refill();
    QComboBox::showPopup();
}

void PortChoice::addEntries(const std::vector<PortEntry>& ports) {
    m_ports = ports;
    for (const PortEntry& port : ports) {
        const int place = static_cast<int>(&port - ports.data());
        insertItem(place, port.name);
        setItemData(place, port.toolTip, Qt::ToolTipRole);
    }
}
