#include "borrow/clientborrower.h"

ClientBorrower::~ClientBorrower() = default;

void ClientBorrower::attachClient(CameraSp* client) {
    m_client = client;
    ++m_generation;
}

void ClientBorrower::setExchangeAllowed(bool allowed) {
    m_window->setEnabled(allowed);
}

void ClientBorrower::setMissingClientHandler(std::function<void()> handler) {
    m_missingClientHandler = std::move(handler);
}

void ClientBorrower::reportMissingClient() const {
    if (m_missingClientHandler)
        m_missingClientHandler();
}
