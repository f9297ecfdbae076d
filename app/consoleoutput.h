// Diagnostic lines of a program with windows, which has no console on Windows.
#pragma once

/// Connects standard output and error, in UTF-8, to the console that started the program or to their
/// redirections. Without either, and on other systems, it does nothing. Construct it before the first line.
class ConsoleOutput final {
public:
    ConsoleOutput();
    ~ConsoleOutput(); // NOLINT(performance-trivially-destructible): on Windows it has something to do
    ConsoleOutput(const ConsoleOutput&) = delete;
    ConsoleOutput& operator=(const ConsoleOutput&) = delete;

private:
    [[maybe_unused]] unsigned int m_previousCodePage = 0; ///< the console's; 0: there is none
};
