// The link as the windows of this module see its owner.
#pragma once

#include "link/protocol/cameratypes.h"
#include "service/finder.h"

#include <QStringList>

/// Port, rate and address of the open link; the type that the technician chose.
struct LinkFacts {
    QString port; ///< empty: no link is open, or without a port
    std::uint32_t baudRate = 0;
    std::uint8_t address = 0;
    protocol::CameraType type = protocol::CameraType::ostra;
};

/// User-interface thread; outlives the windows.
class LinkOwner {
public:
    LinkOwner() = default;
    LinkOwner(const LinkOwner&) = delete;
    LinkOwner& operator=(const LinkOwner&) = delete;

    /// Names of the ports that can be chosen now.
    virtual QStringList choosablePorts() = 0;
    [[nodiscard]] virtual LinkFacts linkFacts() const = 0;
    /// Selects port and rate, sets the address and opens the link. Throws as the opening does.
    virtual void useCamera(const service::FoundCamera& camera) = 0;

protected:
    ~LinkOwner() = default;
};
