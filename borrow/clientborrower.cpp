#include "borrow/clientborrower.h"

ClientBorrower::~ClientBorrower() = default;

void ClientBorrower::attachClient(CameraSp* client) {
    m_client = client;
    ++m_generation;
}

void ClientBorrower::setExchangeAllowed(bool allowed) {
    m_window->setEnabled(allowed);
}

std::shared_ptr<const LinkUse> ClientBorrower::beginUse(const QString& name, bool blocking) const {
    auto use = std::make_shared<const LinkUse>(LinkUse{name, std::chrono::steady_clock::now(), blocking});
    if (m_observer != nullptr)
        m_observer->useBegan(use);
    return use;
}

void ClientBorrower::endUse(const LinkUse& use, bool succeeded) const {
    if (m_observer != nullptr)
        m_observer->useEnded(use, succeeded);
}

void ClientBorrower::reportMissingClient() const {
    if (m_observer != nullptr)
        m_observer->clientMissing();
}
