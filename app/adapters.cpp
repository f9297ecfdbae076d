#include "app/adapters.h"

#include "link/camerasp.h"
#include "service/systemtext.h"

#include <QObject>

namespace {

constexpr const char* nothing = "n/a"; // the library's word

bool isGiven(const std::string& text) {
    return !text.empty() && text != nothing;
}

QString toolTipOf(const serial::PortInfo& port) {
    QStringList lines;
    for (const std::string& text : {port.description, port.hardware_id}) {
        if (isGiven(text))
            lines.append(systemText(text));
    }
    if (!isGiven(port.hardware_id))
        lines.append(QObject::tr("没有转接器信息，通常不是 USB 转接器"));
    return lines.join(QLatin1Char('\n'));
}

QString adapterOf(const serial::PortInfo& port) {
    if (!isGiven(port.hardware_id))
        return {};
    // "USB-SERIAL CH340 (COM3)", or "ttyUSB0" for an adapter without a text.
    QString description = systemText(port.description);
    description.remove(systemText(port.port).section(QLatin1Char('/'), -1));
    return systemText(port.hardware_id) + QLatin1Char('\n') + description;
}

} // namespace

std::vector<PortEntry> presentPorts() {
    std::vector<PortEntry> ports;
    for (const serial::PortInfo& port : CameraSp::describePorts())
        ports.push_back({QString::fromStdString(port.port), toolTipOf(port), adapterOf(port)});
    return ports;
}

void AdapterTrack::confirm(const QString& port, const std::vector<PortEntry>& ports) {
    m_port = port;
    for (const PortEntry& entry : ports) {
        if (entry.name == port)
            m_adapter = entry.adapter;
    }
    m_others = alikeIn(ports);
    m_others.removeAll(port);
}

QStringList AdapterTrack::candidates(const std::vector<PortEntry>& ports) {
    QStringList found = alikeIn(ports);
    m_others.removeIf([&found](const QString& other) { return !found.contains(other); });
    found.removeIf([this](const QString& port) { return m_others.contains(port); });
    return found;
}

QStringList AdapterTrack::alikeIn(const std::vector<PortEntry>& ports) {
    QStringList alike;
    for (const PortEntry& entry : ports) {
        if (m_adapter.isEmpty() ? entry.name == m_port : entry.adapter == m_adapter)
            alike.append(entry.name);
    }
    m_hasAlike = m_hasAlike || alike.size() > 1;
    return alike;
}
