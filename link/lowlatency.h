// Low latency of an adapter's driver.
#pragma once

/// Makes the driver of an open port report received bytes and the end of sending at once, where system and
/// driver can; some adapters otherwise do so every 16 ms.
class LowLatency {
public:
    LowLatency() = default;
    /// The driver's setting is as before.
    ~LowLatency();
    LowLatency(const LowLatency&) = delete;
    LowLatency& operator=(const LowLatency&) = delete;

    /// The descriptor stays open while this object lives; -1: does nothing.
    void begin(int descriptor);

private:
    int m_descriptor = -1; ///< -1: nothing to take back
};
