#include "app/portchoice.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QScopedValueRollback>
#include <QToolTip>

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

const PortEntry* entryOf(const QString& name, const std::vector<PortEntry>& ports) {
    const auto found = std::find_if(ports.begin(), ports.end(),
                                    [&name](const PortEntry& port) { return port.name == name; });
    return found == ports.end() ? nullptr : &*found;
}

/// False for a hardware id that the system gives late.
bool isOtherAdapter(const PortEntry& port, const PortEntry& before) {
    return port.adapter != before.adapter && !port.adapter.isEmpty() && !before.adapter.isEmpty();
}

bool isListedBefore(const PortEntry& left, const PortEntry& right) {
    if (left.adapter.isEmpty() != right.adapter.isEmpty())
        return right.adapter.isEmpty();
    return portNameLess(left.name, right.name);
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

PortChoice::PortChoice(QWidget* parent) : QComboBox(parent) {
    connect(this, &QComboBox::currentTextChanged, this, [this](const QString& port) {
        if (!m_isRefreshing)
            m_wanted = AdapterTrack(port, m_ports);
    });
    connect(this, &QComboBox::activated, this, &PortChoice::keepChoice);
}

bool PortChoice::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QComboBox::event(event);
    // Large texts are cut.
    QToolTip::showText(static_cast<const QHelpEvent*>(event)->globalPos(),
                       toolTip() + QLatin1Char('\n') + currentText(), this);
    return true;
}

void PortChoice::setSource(Source ports) {
    m_source = std::move(ports);
}

void PortChoice::fill() {
    clear();
    addEntries(m_source());
}

void PortChoice::refill() {
    replaceEntries(m_source(), false);
}

void PortChoice::refillWith(std::vector<PortEntry> present) {
    if (!view()->isVisible())
        replaceEntries(std::move(present), true);
}

void PortChoice::replaceEntries(std::vector<PortEntry> present, bool choosesNew) {
    if (std::is_permutation(present.begin(), present.end(), m_ports.begin(), m_ports.end()))
        return;
    std::stable_sort(present.begin(), present.end(), isListedBefore);
    const QString before = currentText();
    const Refresh refresh = refreshFor(present, choosesNew);
    const QScopedValueRollback refreshing(m_isRefreshing, true);
    {
        // One change at the end, not one per step.
        const QSignalBlocker blocker(this);
        // Entries of others stay.
        for (const PortEntry& port : m_ports)
            removeItem(findText(port.name));
        addEntries(present);
        setCurrentIndex(std::max(0, findText(refresh.port)));
    }
    if (refresh.how == How::wanted) {
        m_wanted.confirm(currentText(), m_ports);
    } else if (refresh.how == How::added || m_wanted.port().isEmpty()) {
        m_wanted = AdapterTrack(currentText(), m_ports);
        m_isByHand = false;
    }
    if (currentText() != before)
        emit currentTextChanged(currentText());
    if (const QString text = noticeOf(refresh, before); !text.isEmpty())
        emit noticed(text);
}

PortChoice::Refresh PortChoice::refreshFor(const std::vector<PortEntry>& present, bool choosesNew) {
    Refresh refresh;
    for (const PortEntry& port : present) {
        const PortEntry* const before = entryOf(port.name, m_ports);
        if (before == nullptr || isOtherAdapter(port, *before))
            refresh.added.append(port.name);
    }
    const PortEntry* const shown = entryOf(currentText(), m_ports);
    const PortEntry* const now = entryOf(currentText(), present);
    const bool isCurrentThere =
        shown == nullptr ? !currentText().isEmpty() : now != nullptr && !isOtherAdapter(*now, *shown);

    const QStringList candidates = m_wanted.candidates(present);
    QString wanted;
    if (candidates.contains(m_wanted.port()))
        wanted = m_wanted.port();
    else if (candidates.size() == 1 && !m_wanted.hasAlike())
        wanted = candidates.front();
    const bool isForeign = shown == nullptr && currentText() == m_wanted.port();
    const bool keepsHand = m_isByHand && (isForeign || !candidates.isEmpty());
    if (!wanted.isEmpty() && (keepsHand || refresh.added.contains(wanted)))
        return {How::wanted, wanted, refresh.added};
    if (choosesNew && refresh.added.size() == 1 && !keepsHand)
        return {How::added, refresh.added.front(), refresh.added};
    if (!wanted.isEmpty())
        return {How::wanted, wanted, refresh.added};
    if (isCurrentThere)
        return {How::current, currentText(), refresh.added};
    return {candidates.isEmpty() ? How::replaced : How::unclear, {}, refresh.added};
}

QString PortChoice::noticeOf(const Refresh& refresh, const QString& before) const {
    const QString now = currentText();
    if (now.isEmpty())
        return tr("没有发现串口，请插入转接器后点开串口列表");
    if (refresh.how == How::replaced && !before.isEmpty())
        return tr("所选转接器不在，改选 %1，请核对").arg(now);
    if (refresh.how == How::unclear)
        return tr("有几个相同的转接器，现选 %1，请核对").arg(now);
    if (refresh.added.contains(now))
        return tr("发现新串口 %1，已选好").arg(now);
    if (now != before)
        return tr("转接器在 %1，已选好").arg(now);
    return refresh.added.isEmpty() ? QString()
                                   : tr("发现新串口 %1，仍选 %2").arg(refresh.added.join(tr("、")), now);
}

void PortChoice::choose(const QString& port) {
    if (findText(port) < 0)
        addItem(port);
    setCurrentText(port);
    keepChoice();
}

void PortChoice::keepChoice() {
    m_wanted = AdapterTrack(currentText(), m_ports);
    m_isByHand = true;
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
