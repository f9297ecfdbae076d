// The list of serial ports. Opening it refreshes it.
#pragma once

#include "app/adapters.h"

#include <QComboBox>

#include <functional>
#include <vector>

/// Natural sort order: COM9 before COM10.
[[nodiscard]] bool portNameLess(const QString& left, const QString& right);

/// A combo box of port names. Entries added by others stay, behind those of the source.
class PortChoice final : public QComboBox {
    Q_OBJECT

public:
    using QComboBox::QComboBox;

    /// Gives the present ports in the order reported; may run on any thread.
    using Source = std::function<std::vector<PortEntry>()>;
    void setSource(Source ports);
    [[nodiscard]] const Source& source() const { return m_source; }
    /// The first fill: the order reported, the first port chosen.
    void fill();
    /// If the ports changed: sorts them by name and keeps the chosen port if it is still there.
    void refill();
    /// Chooses the port, which is added if it is not in the list.
    void choose(const QString& port);
    /// The ports of the source as shown.
    [[nodiscard]] const std::vector<PortEntry>& ports() const { return m_ports; }

    void showPopup() override;

private:
    void addEntries(const std::vector<PortEntry>& ports);

    Source m_source;
    std::vector<PortEntry> m_ports;
};
