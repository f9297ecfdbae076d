#include "app/responsiveness.h"

void tellSystemAlive() {}
