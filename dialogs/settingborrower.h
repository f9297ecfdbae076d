// Camera settings as properties: reading and writing them for the windows that show them.
#pragma once

#include "borrow/clientborrower.h"

#include <chrono>
#include <cstdint>
#include <utility>
#include <vector>

class QLabel;

/// Property ids of the settings that have a window. Values are unsigned bytes unless said otherwise.
enum class SettingId : std::uint8_t {
    compressionRate = 6,
    captureAngles = 10,    ///< angle A, angle B; degrees
    captureDirection = 11, ///< 1 = clockwise, else anticlockwise
    captureReserve = 12,   ///< meaning known to the camera only; read and logged
    gyroSwitch = 13,       ///< 1 = on, else off
    heaterDuty = 15,       ///< percent
    orientation = 16,      ///< unsigned 32-bit, little-endian; every read gives the next quantity
};

/// A window that shows settings of the camera. User-interface thread only.
class SettingBorrower : public ClientBorrower {
public:
    using ClientBorrower::ClientBorrower;

    /// Value bytes of one setting; empty when the read failed.
    using Value = std::vector<std::uint8_t>;

protected:
    /// One exchange on this thread. False also without a client.
    [[nodiscard]] bool writeSetting(SettingId id, Value value) const;
    /// Reads a one-byte setting on this thread (one exchange) and shows it behind the prefix, or the failure
    /// text. Of a longer answer the first byte is shown and all are logged.
    void showByteSetting(SettingId id, QLabel* label, const QString& prefix, const QString& failure) const;

    /// Reads the settings on the pool, in order, with a pause after each (the last included), hands the
    /// values to `log` there and to `apply` on the user-interface thread. One value for each id, empty when
    /// its read failed or was given up: for a whole job that asks for the line, or because the window is
    /// closed.
    template <typename Log, typename Apply>
    void fetchSettings(QObject* context, std::vector<SettingId> ids, std::chrono::milliseconds pauseAfterEach,
                       Log log, Apply apply) {
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
    static std::vector<Value> readSettings(CameraSp* camera, const std::vector<SettingId>& ids,
                                           std::chrono::milliseconds pauseAfterEach,
                                           const std::atomic<bool>& wanted);
};
