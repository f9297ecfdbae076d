// Opening a port: the part that depends on the system.
#pragma once

#include <serial/serial.h>

#include <chrono>
#include <string>

/// The name, if the library may open it; throws the library's exception, with the error number, if not.
[[nodiscard]] const std::string& checkedPortName(const std::string& name);

/// Throws a better exception where the system knows more than the library's failure says.
/// taken: by the opening that failed.
void throwReasonOfOpening(const std::string& name, const serial::IOException& failure,
                          std::chrono::nanoseconds taken);
