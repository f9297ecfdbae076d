// The diagnostic lines of a program with windows, which Windows starts without a console.
#pragma once

/// While it lives, standard output and error reach the console from which the program was started, or what
/// they were redirected to, in UTF-8. Without either, and on other systems, nothing changes. To be made
/// before the first line is written.
class ConsoleOutput final {
public:
    ConsoleOutput();
    ~ConsoleOutput(); // NOLINT(performance-trivially-destructible): on Windows it has something to do
    ConsoleOutput(const ConsoleOutput&) = delete;
    ConsoleOutput& operator=(const ConsoleOutput&) = delete;

private:
    [[maybe_unused]] unsigned int m_previousCodePage = 0; ///< the console's; 0: there is none
};
