// shelf-camera from its command line to its exit code.
#pragma once

namespace cli {

/// Takes what the main function is given, with the standard streams. Sets signal handlers, Qt's message
/// handler and the stream of diagnostics for the process; its application object lives during the call.
[[nodiscard]] int runCommandLine(int& count, char** arguments);

} // namespace cli
