#include "app/keepawake.h"

#include "app/system.h"

KeepAwake::KeepAwake() {
    keepSystemAwake(true);
}

KeepAwake::~KeepAwake() {
    keepSystemAwake(false);
}
