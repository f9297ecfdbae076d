// The list of serial ports. Opening it refreshes it.
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

/// Natural sort order: COM9 before COM10.
[[nodiscard]] bool portNameLess(const QString& left, const QString& right);

/// A combo box of port names. Entries added by others stay, behind those of the source.
class PortChoice final : public QComboBox {
    Q_OBJECT

public:
    using QComboBox::QComboBox;

    /// Gives the present ports in the order reported.
    void setSource(std::function<std::vector<PortEntry>()> ports);
    /// The first fill: the order reported, the first port chosen.
    void fill();
    /// If the ports changed: sorts them by name and keeps the chosen port if it is still there.
    void refill();

    void showPopup() override;

private:
    void addEntries(const std::vector<PortEntry>& ports);

    std::function<std::vector<PortEntry>()> m_source;
    std::vector<PortEntry> m_ports; ///< as shown
};
