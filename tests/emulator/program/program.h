// The virtual-camera program as a process.
#pragma once

#include "tests/support/process.h"

namespace emulatortest {

/// The program with its output in two files of the working directory: "out" and "err", or with a prefix of
/// those names. English unless the environment says otherwise.
class Program : public Process {
public:
    explicit Program(std::vector<std::string> arguments, const std::string& prefix = {},
                     const Environment& environment = {{"LANGUAGE", "en"}})
        : Process(VIRTUAL_CAMERA_PROGRAM, std::move(arguments), {{}, prefix + "out", prefix + "err"},
                  environment) {}
};

} // namespace emulatortest
