// Services of the operating system.
#pragma once

/// Says that a long command blocks the user-interface thread but has not hung. To be called now and then;
/// processes no event.
void tellSystemAlive();

/// Keeps the system from going to sleep, until told otherwise.
void keepSystemAwake(bool awake);
