// Searching several ports at the same time.
#pragma once

#include "service/failuretext.h"
#include "service/finder.h"

#include <mutex>

namespace service {

/// Called on the thread of run().
struct PortSearchObserver {
    std::function<void()> tried; ///< before each attempt
    std::function<void(const FoundCamera& camera)> found;
    std::function<void(const std::string& port, const FailureText& failure)> failed;
};

/// Opens ports by itself. Any thread. No two searches of the program have a port open at the same time.
class PortSearch {
public:
    explicit PortSearch(std::vector<FindPlan> plans) : m_plans(std::move(plans)) {}

    /// Searches the ports that no other thread has begun, one after the other. Blocks.
    void run(const PortSearchObserver& observer);
    /// Ends the search after the running attempts.
    void stop() { m_stopped = true; }
    [[nodiscard]] const std::atomic<bool>& stopped() const { return m_stopped; }

    /// Blocks until no search has the port open. Stop the searches first: it then takes the opening of the
    /// port and one attempt at most.
    static void waitUntilFree(const std::string& port);

private:
    const FindPlan* takeNext();

    const std::vector<FindPlan> m_plans;
    std::atomic<bool> m_stopped{false};
    std::atomic<std::size_t> m_next{0};
};

} // namespace service
