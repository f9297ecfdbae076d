// What the owner of the link is told about the use that windows make of it.
#pragma once

#include <QString>

#include <chrono>
#include <memory>
#include <type_traits>

/// One command or job over the link while it runs. Dropped by its user when it is over, told or not.
struct LinkUse {
    QString name; ///< what the technician calls it, in the infinitive; empty: not worth telling
    std::chrono::steady_clock::time_point began;
    bool blocking; ///< runs on the user-interface thread: nothing is painted until it ends
};

/// Follows what borrowers do. User-interface thread only; outlives the borrowers that it follows.
class LinkUseObserver {
public:
    LinkUseObserver() = default;
    LinkUseObserver(const LinkUseObserver&) = delete;
    LinkUseObserver& operator=(const LinkUseObserver&) = delete;

    /// A command was asked for although no link is open; it has failed.
    virtual void clientMissing() = 0;
    /// The use lasts until useEnded, or until its last owner drops it: a job whose window died, or whose link
    /// was closed, ends without a word.
    virtual void useBegan(const std::shared_ptr<const LinkUse>& use) = 0;
    virtual void useEnded(const LinkUse& use, bool succeeded) = 0;

protected:
    ~LinkUseObserver() = default;
};

/// Whether the result of a command or job says success: true, any text, any bytes. Of a list of values one
/// that was read is enough.
template <typename Result>
[[nodiscard]] bool saysSuccess(const Result& result) {
    if constexpr (requires { result.front().empty(); }) {
        for (const auto& value : result) {
            if (!value.empty())
                return true;
        }
        return false;
    } else if constexpr (requires { result.empty(); }) {
        return !result.empty();
    } else if constexpr (std::is_constructible_v<bool, const Result&>) {
        return static_cast<bool>(result);
    } else {
        return true;
    }
}
