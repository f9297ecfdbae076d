// System-dependent part of opening a port.
#pragma once

#include <serial/serial.h>

#include <chrono>
#include <string>

/// Returns the name, or throws the library's exception with the error number if the library must not open it.
[[nodiscard]] const std::string& checkedPortName(const std::string& name);

/// Throws an exception with the error number if the system gives one. taken: duration of the failed opening.
void throwReasonOfOpening(const std::string& name, const serial::IOException& failure,
                          std::chrono::nanoseconds taken);
