// The commands of shelf-camera on one open link.
#pragma once

#include "cli/options.h"
#include "cli/output.h"
#include "link/camerasp.h"

namespace service {
class LineQuality;
}

namespace cli {

/// The objects that a command uses; all outlive it.
struct CommandContext {
    CameraSp& camera;
    const Options& options;
    const std::string& port;
    service::LineQuality& quality; ///< sees every byte of the link
    Output& output;
    bool severalPorts = false;
    /// Shows a text in the progress line.
    std::function<void(const QString& text)> tell;

    /// The port without its folder.
    [[nodiscard]] QString portName() const;
    /// The path; with several ports the port's name stands before its extension.
    [[nodiscard]] QString fileFor(const QString& path) const;
};

/// Runs the command of the options. Blocks; a stopped link ends it within a second.
[[nodiscard]] Result runCommand(const CommandContext& context);

/// The failure of a command: words, code.
[[nodiscard]] Result failureOf(const QString& what, const CommandReport& report);

} // namespace cli
