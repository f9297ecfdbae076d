// A recording stand-in for the serial library: the functions of the library's own header, linked in its
// place.
#pragma once

#include <serial/serial.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Script and record of all port objects of the process. Thread-safe.
namespace fake_serial {

using Bytes = std::vector<std::uint8_t>;

/// Forgets every call and script.
void reset();

/// What serial::list_ports reports; none after reset.
void setPorts(std::vector<serial::PortInfo> ports);
/// Every non-empty port name fails to open with serial::IOException of this error number; 0 opens again.
void failOpening(int errorNumber);

/// A later read call returns these bytes. Extra bytes stay for the next read.
void willRead(Bytes bytes);
/// A later read call returns nothing, as after a timeout.
void willTimeOut(int times = 1);
/// A later read call throws serial::SerialException.
void willThrowOnRead();
/// After the scripted reads, every read returns these bytes (default: none).
void willReadForever(Bytes bytes);
/// The next write reports this count instead of all.
void willWriteOnly(std::size_t count);
/// Calls of this name ("setTimeout", "flushInput", "flush", "write", "read") throw from now on.
void throwOn(const std::string& call, const std::string& text = "scripted");
/// flushInput throws serial::IOException with this text; the default is that of version 1.2.1 of the library
/// on Windows.
void refuseFlushInput(const std::string& text = "flushInput is not supported on Windows.");
/// available() reports this count although the next read returns nothing.
void willPromise(std::size_t count);
/// Called after every write with the bytes written, on the writing thread; may script reads.
void onWrite(std::function<void(const Bytes&)> reaction);

/// Every library call in order, in words: "open NAME BAUD 4294967295,50,0,50,0 8N1", "close",
/// "setTimeout 4294967295,200,0,200,0", "flushInput", "flush", "write AA 5A ..", "read 100", "available".
[[nodiscard]] std::vector<std::string> calls();
/// The bytes of every write call, in order.
[[nodiscard]] std::vector<Bytes> writes();
/// Calls of one name, "read" for instance.
[[nodiscard]] int count(const std::string& call);

/// "AA 5A 01" to bytes and back.
[[nodiscard]] Bytes bytes(const std::string& hexText);
[[nodiscard]] std::string hex(const Bytes& bytes);

} // namespace fake_serial
