// The virtual camera's end of the line in tests: a pseudo-terminal in real time, or a simulated line in
// virtual time (camera_test's VIRTUAL_TIME).
#pragma once

#ifdef CAMERA_VIRTUAL_TIME
#include "tests/simulation/world/simulatedfront.h"
using TestFront = world::SimulatedFront;
#else
#include "emulator/line/ptyfront.h"
using TestFront = emulator::PtyFront;
#endif
