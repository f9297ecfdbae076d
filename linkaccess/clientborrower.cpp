#include "linkaccess/clientborrower.h"

#include "link/diagnostics.h"
#include "link/guarded.h"

ClientBorrower::~ClientBorrower() {
    *m_wanted = false;
}

void ClientBorrower::attachClient(CameraSp* client) {
    m_client = client;
    ++m_generation;
    clientChanged();
}

void ClientBorrower::setObserver(LinkUseObserver* observer) {
    m_observer = observer;
    if (m_observer == nullptr)
        return;
    for (const auto& job : std::exchange(m_jobs, {})) {
        if (const auto running = job.lock())
            m_observer->useBegan(running);
    }
}

void ClientBorrower::setExchangeAllowed(bool allowed) {
    m_window->setEnabled(allowed);
}

std::shared_ptr<const LinkUse> ClientBorrower::beginUse(const QString& name, bool blocking) const {
    auto use = std::make_shared<const LinkUse>(LinkUse{name, clock().now(), blocking});
    if (m_observer != nullptr)
        m_observer->useBegan(use);
    else if (!blocking)
        m_jobs.push_back(use);
    return use;
}

void ClientBorrower::endUse(const LinkUse& use, const UseOutcome& outcome) const {
    if (m_observer != nullptr)
        m_observer->useEnded(use, outcome);
}

void ClientBorrower::reportMissingClient() const {
    if (m_observer != nullptr)
        m_observer->clientMissing();
}

void ClientBorrower::tellException() {
    diagnostics::line("command failed:", exceptionText());
    ReportScope::tell({CommandEnd::failed});
}
