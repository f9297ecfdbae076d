// Services of the operating system.
#pragma once

/// Tells the system that the user-interface thread, blocked by a long command, has not hung. Call it now and
/// then; processes no events.
void tellSystemAlive();

/// Prevents the system's sleep until it is called with false.
void keepSystemAwake(bool awake);
