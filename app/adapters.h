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
    AdapterTrack(const QString& port, const std::vector<PortEntry>& ports);

    /// Name of the adapter's port when the track began.
    [[nodiscard]] const QString& port() const { return m_port; }

    /// Names of the ports that may be the adapter; several: alike adapters that cannot be told apart. An
    /// alike adapter that was there from the beginning is none of them until it is gone. Call for each new
    /// list.
    [[nodiscard]] QStringList candidates(const std::vector<PortEntry>& ports);

private:
    [[nodiscard]] QStringList alikeIn(const std::vector<PortEntry>& ports) const;

    QString m_port;
    QString m_adapter;
    QStringList m_others; ///< ports of alike adapters
};
