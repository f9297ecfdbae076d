// Texts of the system and of libraries that hand on what the system says.
#pragma once

#include <QString>

#include <string>

/// UTF-8 where the bytes are that; else they are taken to be in the code page of the system.
[[nodiscard]] QString systemText(const std::string& bytes);
