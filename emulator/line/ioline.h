// A ByteLine on what LineIo can wait for.
#pragma once

#include "emulator/line/byteline.h"
#include "emulator/line/lineio.h"

namespace emulator {

/// Derived classes own the line.
class IoLine : public ByteLine {
public:
    bool read(Bytes& bytes, std::chrono::milliseconds patience) override;
    std::optional<std::size_t> write(ByteView bytes, std::chrono::milliseconds patience) override;

protected:
    /// The same from the making to the destruction.
    [[nodiscard]] virtual LineIo::Line line() const = 0;

private:
    LineIo m_reading; // one for each thread that may wait
    LineIo m_writing;
};

} // namespace emulator
