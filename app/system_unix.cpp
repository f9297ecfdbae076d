#include "app/system.h"

void tellSystemAlive() {}

void keepSystemAwake(bool /*awake*/) {}
