// Keeping the computer awake.
#pragma once

/// The computer does not go to sleep by itself for as long as an object of this class lives. On systems
/// without such a call it does nothing. Made and destroyed on the same thread.
class KeepAwake {
public:
    KeepAwake();
    ~KeepAwake();
    KeepAwake(const KeepAwake&) = delete;
    KeepAwake& operator=(const KeepAwake&) = delete;
};
