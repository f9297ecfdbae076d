// System-dependent parts of shelf-camera: interruption, terminal.
#pragma once

namespace cli {

/// From now on the first Ctrl+C is only noted; the second ends the process at once with code 130.
void watchForInterrupts();
[[nodiscard]] bool interrupted();

/// Standard input and standard error.
[[nodiscard]] bool inputIsTerminal();
[[nodiscard]] bool errorIsTerminal();
/// Waits until standard input, a terminal, can be read. False if an interruption came first.
[[nodiscard]] bool awaitInput();
/// Makes the console take UTF-8 and escape sequences, where it does not by itself.
void prepareConsole();
/// Makes a QGuiApplication start without a display. Its fonts are those of the system.
void drawWithoutDisplay();

} // namespace cli
