// Keeping the computer awake.
#pragma once

/// Prevents the computer's sleep while it lives, where the system offers a call for it. Constructed and
/// destroyed on the same thread.
class KeepAwake {
public:
    KeepAwake();
    ~KeepAwake();
    KeepAwake(const KeepAwake&) = delete;
    KeepAwake& operator=(const KeepAwake&) = delete;
};
