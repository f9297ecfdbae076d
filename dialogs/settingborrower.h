// Camera settings as properties: reading and writing them for the windows that show them.
#pragma once

#include "link/protocol/commands.h"
#include "linkaccess/clientborrower.h"

#include <chrono>
#include <cstdint>
#include <utility>
#include <vector>

class QLabel;

/// A window that shows settings of the camera. User-interface thread only.
class SettingBorrower : public ClientBorrower {
public:
    using ClientBorrower::ClientBorrower;

    /// Value bytes of one setting; empty when the read failed.
    using Value = std::vector<std::uint8_t>;

protected:
    /// One exchange on this thread. False also without a client.
    [[nodiscard]] bool writeSetting(protocol::PropertyId id, Value value) const;
    /// Reads a one-byte setting on this thread (one exchange) and shows it behind the prefix, or the failure
    /// text. Of a longer answer the first byte is shown and all are logged.
    void showByteSetting(protocol::PropertyId id, QLabel* label, const QString& prefix,
                         const QString& failure) const;

    /// Reads the settings on the pool, in order, with a pause after each (the last included), hands the
    /// values to `log` there and to `apply` on the user-interface thread. One value for each id, empty when
    /// its read failed or was given up: for a whole job that asks for the line, or because the window is
    /// closed.
    template <typename Log, typename Apply>
    void fetchSettings(QObject* context, std::vector<protocol::PropertyId> ids,
                       std::chrono::milliseconds pauseAfterEach, Log log, Apply apply) {
        runOnPool(
            readName(), context,
            [ids = std::move(ids), pauseAfterEach, log = std::move(log),
             wanted = wanted()](CameraSp* camera) {
                auto values = readSettings(camera, ids, pauseAfterEach, *wanted);
                log(values);
                return values;
            },
            std::move(apply));
    }

private:
    /// Status bar name of a read.
    static QString readName();
    static std::vector<Value> readSettings(CameraSp* camera, const std::vector<protocol::PropertyId>& ids,
                                           std::chrono::milliseconds pauseAfterEach,
                                           const std::atomic<bool>& wanted);
};
