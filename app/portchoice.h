// The list of serial ports. Opening it refreshes it.
#pragma once

#include "app/adapters.h"

#include <QComboBox>

#include <cstdint>
#include <functional>
#include <vector>

/// Natural sort order: COM9 before COM10.
[[nodiscard]] bool portNameLess(const QString& left, const QString& right);

/// A combo box of port names. Entries added by others stay, behind those of the source.
///
/// The choice belongs to an adapter: it follows the adapter to another name and comes back with it. Among
/// alike adapters that cannot be told apart only the name counts.
class PortChoice final : public QComboBox {
    Q_OBJECT

public:
    explicit PortChoice(QWidget* parent = nullptr);

    /// Gives the present ports in the order reported; may run on any thread.
    using Source = std::function<std::vector<PortEntry>()>;
    void setSource(Source ports);
    [[nodiscard]] const Source& source() const { return m_source; }
    /// The first fill: the order reported, the first port chosen.
    void fill();
    /// If the ports changed: sorts them by name, those without a hardware id last, and keeps the choice.
    void refill();
    /// The same with ports that the source gave, unless the user is choosing. A new port is chosen unless
    /// the user's choice is still there.
    void refillWith(std::vector<PortEntry> present);
    /// Chooses the port for the user; adds it if it is not in the list.
    void choose(const QString& port);
    /// The user uses the current port.
    void keepChoice();
    /// The ports of the source as shown.
    [[nodiscard]] const std::vector<PortEntry>& ports() const { return m_ports; }

    void showPopup() override;

protected:
    bool event(QEvent* event) override;

signals:
    /// A sentence for the status bar: a refresh found a port or changed the choice.
    void noticed(const QString& text);

private:
    /// Why a port is chosen after a refresh.
    enum class How : std::uint8_t {
        wanted,   ///< belongs to the wanted adapter
        added,    ///< is the new one
        current,  ///< was chosen; the wanted adapter is absent
        replaced, ///< the first one: the wanted adapter is absent
        unclear,  ///< the first one: alike adapters cannot be told apart
    };
    struct Refresh {
        How how = How::wanted;
        QString port;      ///< empty: the first one
        QStringList added; ///< not shown before, or of another adapter
    };
    void replaceEntries(std::vector<PortEntry> present, bool choosesNew);
    [[nodiscard]] Refresh refreshFor(const std::vector<PortEntry>& present, bool choosesNew);
    [[nodiscard]] QString noticeOf(const Refresh& refresh, const QString& before) const;
    void addEntries(const std::vector<PortEntry>& ports);

    Source m_source;
    std::vector<PortEntry> m_ports;
    AdapterTrack m_wanted;   ///< chosen last, also while it is absent
    bool m_isByHand = false; ///< the user chose it
    bool m_isRefreshing = false;
};
