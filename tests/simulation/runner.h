// Runs many sessions, each in a process of its own, and makes failing scenarios short.
#pragma once

#include "tests/simulation/session.h"

#include <cstdint>
#include <functional>
#include <string>

namespace simulation {

/// The scenario of this seed: always the same one.
[[nodiscard]] Scenario scenarioOf(std::uint64_t seed);

/// Starts a process for each camera type, whose children are the sessions. First thing after warmUp(): the
/// memory of this process is then always the same.
void startServers();

/// Runs the session in a child of its server, in an empty directory. A crash, a deadlock and a session that
/// does not end in real time are complaints.
[[nodiscard]] Outcome runInChild(const Scenario& scenario, const View& view = {});

/// Runs it here, in an empty directory.
[[nodiscard]] Outcome runHere(const Scenario& scenario, const View& view);

/// The shortest failing scenario that shrinking finds; the first complaint keeps its rule (the text before
/// ":").
[[nodiscard]] Scenario shrunk(std::uint64_t seed, const Outcome& failure);

} // namespace simulation
