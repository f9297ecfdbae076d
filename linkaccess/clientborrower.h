// How windows borrow the camera client and run work on the pool.
#pragma once

#include "link/camerasp.h"
#include "linkaccess/linkuse.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>
#include <QWidget>
#include <QtConcurrentRun>

#include <atomic>
#include <functional>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

/// A window that uses the client without owning it. The owner of the link attaches the client when a link
/// opens and detaches it before the link ends: the pointer is valid or null. Without a client every command
/// fails: false, an empty text, an empty vector. User-interface thread, except the work of runOnPool.
class ClientBorrower {
public:
    /// `window` is the borrower itself; the client may be null.
    ClientBorrower(QWidget* window, CameraSp* client) : m_window(window), m_client(client) {}
    virtual ~ClientBorrower();

    ClientBorrower(const ClientBorrower&) = delete;
    ClientBorrower& operator=(const ClientBorrower&) = delete;

    /// Null detaches. Results of running jobs are dropped.
    void attachClient(CameraSp* client);
    /// Observes all commands and jobs from now on. Null: none.
    void setObserver(LinkUseObserver* observer);
    /// False before, true after an upload, capture or return wait: the window is disabled in between and
    /// starts no exchange.
    void setExchangeAllowed(bool allowed);
    /// False for a window that is of use without a client.
    [[nodiscard]] virtual bool needsClient() const { return true; }

protected:
    /// Called when the link opened or is about to end. client() tells which.
    virtual void clientChanged() {}
    [[nodiscard]] CameraSp* client() const { return m_client; }
    /// The client's clock; without a client the system's.
    [[nodiscard]] Clock& clock() const { return m_client != nullptr ? m_client->clock() : Clock::system(); }
    /// Incremented by attachClient: identifies results of earlier links.
    [[nodiscard]] std::uint64_t linkGeneration() const { return m_generation; }

    /// Runs one command on this thread. Without a client it returns the failure value. name: LinkUse::name.
    template <typename Result, typename... Parameters, typename... Arguments>
    Result ask(const QString& name, Result (CameraSp::*command)(Parameters...),
               Arguments&&... arguments) const {
        if (m_client == nullptr) {
            reportMissingClient();
            return Result();
        }
        const auto use = beginUse(name, true);
        const ReportScope scope;
        if constexpr (std::is_void_v<Result>) {
            (m_client->*command)(std::forward<Arguments>(arguments)...);
            endUse(*use, {scope.report()});
        } else {
            Result result = (m_client->*command)(std::forward<Arguments>(arguments)...);
            endUse(*use, {scope.report()});
            return result;
        }
    }

    /// Leases the client and runs `work(CameraSp*)` on the global thread pool, then `apply(result)` on the
    /// user-interface thread, unless the context died or the link changed. `work` must not touch the window;
    /// its client may be null; an exception in it gives a default result. name: LinkUse::name.
    template <typename Work, typename Apply>
    void runOnPool(const QString& name, QObject* context, Work work, Apply apply) {
        struct Job {
            CameraSp* client = nullptr;
            CameraSp::Lease lease;
            Work work;
            auto run() { return work(client); }
        };
        std::shared_ptr<const LinkUse> use;
        if (m_client != nullptr)
            use = beginUse(name, false);
        else
            reportMissingClient();
        auto job = std::make_shared<Job>(Job{
            m_client, m_client != nullptr ? CameraSp::Lease(*m_client) : CameraSp::Lease(), std::move(work)});
        // Only this thread uses the pointers: the context may die at any time.
        auto deliver = [this, context = QPointer<QObject>(context), generation = m_generation,
                        use = std::move(use),
                        apply = std::move(apply)](auto&& result, const CommandReport& report) mutable {
            if (context == nullptr || generation != m_generation)
                return;
            if (use != nullptr)
                endUse(*use, outcomeOf(result, report));
            apply(std::forward<decltype(result)>(result));
        };
        start(std::move(job), std::move(deliver));
    }

    /// Runs `work()` on the pool, which uses no client, then `apply(result)` on the user-interface thread
    /// unless the context died. The observer is not told.
    template <typename Work, typename Apply>
    static void runWithoutClient(QObject* context, Work work, Apply apply) {
        struct Job {
            Work work;
            auto run() { return work(); }
        };
        auto deliver = [context = QPointer<QObject>(context),
                        apply = std::move(apply)](auto&& result, const CommandReport&) mutable {
            if (context != nullptr)
                apply(std::forward<decltype(result)>(result));
        };
        start(std::make_shared<Job>(Job{std::move(work)}), std::move(deliver));
    }

    /// For work on the pool: a function that hands a value to `show` on the user-interface thread, in the
    /// order of the calls and before the work's result. Dropped if the context died or the link changed.
    template <typename Value>
    [[nodiscard]] std::function<void(Value)> reporter(QObject* context,
                                                      std::function<void(const Value& value)> show) const {
        struct Target {
            QPointer<QObject> context;
            std::uint64_t generation = 0;
            std::function<void(const Value& value)> show;
        };
        auto target = std::make_shared<Target>(Target{context, m_generation, std::move(show)});
        return [this, target = std::move(target)](Value value) {
            QMetaObject::invokeMethod(
                qApp,
                [this, target, value = std::move(value)] {
                    if (target->context != nullptr && target->generation == m_generation)
                        target->show(value);
                },
                Qt::QueuedConnection);
        };
    }

    /// Starts a use that the caller ends by endUse().
    [[nodiscard]] std::shared_ptr<const LinkUse> beginUse(const QString& name, bool blocking) const;
    void endUse(const LinkUse& use, const UseOutcome& outcome) const;
    void reportMissingClient() const;

    /// False after the end of this window. Any thread.
    using Wanted = std::shared_ptr<const std::atomic<bool>>;
    [[nodiscard]] Wanted wanted() const { return m_wanted; }

private:
    template <typename Job, typename Deliver>
    static void start(std::shared_ptr<Job> job, Deliver deliver) {
        std::ignore = QtConcurrent::run(
            QThreadPool::globalInstance(), [job = std::move(job), deliver = std::move(deliver)]() mutable {
                const ReportScope scope;
                auto result = resultOf([&job] { return job->run(); });
                QTimer::singleShot(
                    0, qApp,
                    [deliver = std::move(deliver), result = std::move(result),
                     report = scope.report()]() mutable { deliver(std::move(result), report); });
                // The lease ends last: the thread that waits for it may end the application next.
                job.reset();
            });
    }
    template <typename Work>
    static std::invoke_result_t<Work> resultOf(Work work) {
        try {
            return work();
        } catch (...) {
            tellException();
            return {};
        }
    }
    static void tellException();

    QWidget* m_window;
    CameraSp* m_client;
    std::uint64_t m_generation = 0;
    LinkUseObserver* m_observer = nullptr;
    mutable std::vector<std::weak_ptr<const LinkUse>> m_jobs; ///< started before an observer was set
    std::shared_ptr<std::atomic<bool>> m_wanted = std::make_shared<std::atomic<bool>>(true);
};
