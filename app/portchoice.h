// The list of serial ports to choose from, which looks again whenever it is opened.
#pragma once

#include <QComboBox>

#include <functional>
#include <vector>

/// One entry of the list.
struct PortEntry {
    QString name;
    QString toolTip; ///< what the system says of the adapter

    friend bool operator==(const PortEntry&, const PortEntry&) = default;
};

/// Whether the name comes first; numbers inside count as numbers: COM9 before COM10.
[[nodiscard]] bool portNameLess(const QString& left, const QString& right);

/// A combo box of port names. Entries that others add stand behind those of the source and stay there.
class PortChoice final : public QComboBox {
    Q_OBJECT

public:
    using QComboBox::QComboBox;

    /// Asked for the ports present, in the order reported, at the first fill and whenever the list is opened.
    void setSource(std::function<std::vector<PortEntry>()> ports);
    /// The first fill: the order reported, the first port chosen.
    void fill();
    /// Looks again. Leaves the list alone when the same ports are there; else sorts them by name and keeps
    /// the port chosen if it is still there.
    void refill();

    void showPopup() override;

private:
    void addEntries(const std::vector<PortEntry>& ports);

    std::function<std::vector<PortEntry>()> m_source;
    std::vector<PortEntry> m_ports; ///< as shown
};
