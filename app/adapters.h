// The present serial ports, and how one adapter is found again among them.
#pragma once

#include <QStringList>

#include <vector>

/// One entry of the list of ports.
struct PortEntry {
    QString name;
    QString toolTip; ///< what the system says of the adapter
    QString adapter; ///< hardware id and description without the port's name; empty: the system gives no id

    friend bool operator==(const PortEntry&, const PortEntry&) = default;
};

/// All serial ports in the order reported. Any thread.
[[nodiscard]] std::vector<PortEntry> presentPorts();

/// Finds the adapter of a port in later lists, also under another name. Without a hardware id the name
/// decides.
class AdapterTrack {
public:
    AdapterTrack() = default;
    /// The adapter that has this name in the list.
    AdapterTrack(const QString& port, const std::vector<PortEntry>& ports) { confirm(port, ports); }

    /// The adapter has this name in the list; alike adapters there are others.
    void confirm(const QString& port, const std::vector<PortEntry>& ports);
    /// Name of the adapter's port when it was last confirmed.
    [[nodiscard]] const QString& port() const { return m_port; }

    /// Names of the ports that may be the adapter; several: alike adapters that cannot be told apart. Another
    /// alike adapter is none of them until it is gone. Call for each new list.
    [[nodiscard]] QStringList candidates(const std::vector<PortEntry>& ports);
    /// True if an alike adapter was ever in a list: a candidate with another name may be that one.
    [[nodiscard]] bool hasAlike() const { return m_hasAlike; }

private:
    [[nodiscard]] QStringList alikeIn(const std::vector<PortEntry>& ports);

    QString m_port;
    QString m_adapter;
    QStringList m_others; ///< ports of alike adapters
    bool m_hasAlike = false;
};
