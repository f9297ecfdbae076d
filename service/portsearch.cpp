#include "service/portsearch.h"

#include <condition_variable>
#include <set>

namespace service {

namespace {

/// The ports that searches of the program have open.
class PortsInUse {
public:
    void take(const std::string& port) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return !m_ports.contains(port); });
        m_ports.insert(port);
    }
    void giveBack(const std::string& port) {
        {
            const std::lock_guard lock(m_mutex);
            m_ports.erase(port);
        }
        m_changed.notify_all();
    }
    void waitUntilFree(const std::string& port) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return !m_ports.contains(port); });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::set<std::string> m_ports;
};

PortsInUse& portsInUse() {
    static PortsInUse ports;
    return ports;
}

class PortUse {
public:
    explicit PortUse(const std::string& port) : m_port(port) { portsInUse().take(m_port); }
    ~PortUse() { portsInUse().giveBack(m_port); }
    PortUse(const PortUse&) = delete;
    PortUse& operator=(const PortUse&) = delete;

private:
    const std::string& m_port;
};

} // namespace

void PortSearch::run(const PortSearchObserver& observer) {
    const FindObserver found{[&observer](std::size_t) { observer.tried(); }, observer.found};
    while (const FindPlan* const plan = takeNext()) {
        const PortUse use(plan->port);
        try {
            findCameras(*plan, found, m_stopped);
        } catch (...) {
            observer.failed(plan->port, failureText(std::current_exception()));
        }
    }
}

const FindPlan* PortSearch::takeNext() {
    const std::size_t next = m_stopped ? m_plans.size() : m_next++;
    return next < m_plans.size() ? &m_plans[next] : nullptr;
}

void PortSearch::waitUntilFree(const std::string& port) {
    portsInUse().waitUntilFree(port);
}

} // namespace service
