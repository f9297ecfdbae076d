#include "service/returnwait.h"

bool awaitReturn(CameraSp& camera, const ReturnAttempts& wait,
                 const std::function<void(int attempt)>& attempting) {
    for (int attempt = 1; attempt <= wait.attempts; ++attempt) {
        attempting(attempt);
        if (!camera.pause(wait.interval))
            return false;
        if (camera.testHeartBeat())
            return true;
    }
    return false;
}
