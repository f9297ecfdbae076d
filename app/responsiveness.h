// Keeping the system from calling the program hung.
#pragma once

/// To be called now and then while a command blocks the user-interface thread. Processes no event.
void tellSystemAlive();
