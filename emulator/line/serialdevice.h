// Opens serial devices by system calls: serialdevice_unix.cpp, serialdevice_windows.cpp.
#pragma once

#include "emulator/line/lineio.h"

#include <string>

namespace emulator {

/// Opens the device (Windows: the COM port) for LineIo: raw, 8 data bits, no parity, at the rate. Throws
/// std::runtime_error with a text for people when it cannot be opened as a serial device.
[[nodiscard]] LineIo::Line openSerialDevice(const std::string& path, std::uint32_t baudRate);
void closeSerialDevice(LineIo::Line device);
/// Nothing for an unusual rate, or when the system cannot tell.
[[nodiscard]] std::optional<std::uint32_t> serialDeviceRate(LineIo::Line device);

} // namespace emulator
