// The commands of shelf-camera on one open link.
#pragma once

#include "cli/options.h"
#include "cli/output.h"
#include "link/camerasp.h"

namespace service {
class LineQuality;
}

namespace cli {

/// What a command works with; everything outlives it.
struct CommandContext {
    CameraSp& camera;
    const Options& options;
    const std::string& port;
    service::LineQuality& quality; ///< sees every byte of the link
    Output& output;
    bool severalPorts = false;
    /// Told what is going on: a text for the progress line.
    std::function<void(const QString& text)> tell;
};

/// Runs the command of the options. Blocks; a stopped link ends it within a second.
[[nodiscard]] Result runCommand(const CommandContext& context);

/// The failure of a command: words, code.
[[nodiscard]] Result failureOf(const QString& what, const CommandReport& report);

} // namespace cli
