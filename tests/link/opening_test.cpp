// Opening and closing by the real serial library: descriptors, low latency, modem lines. Two functions of the
// system stand in for the driver of a pseudo-terminal.
#include "emulator/line/ptyfront.h"
#include "link/camerasp.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/testclock.h"
#include "tests/support/workingdirectory.h"

#include <gtest/gtest.h>
#include <serial/serial.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <linux/serial.h>
#include <optional>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr int lowLatencyFlag = ASYNC_LOW_LATENCY;
constexpr int otherFlag = ASYNC_SKIP_TEST;

/// Of the device under test.
struct Driver {
    dev_t device = 0;
    bool refusesConfiguration = false;
    std::optional<int> flags; ///< none: the driver has no such settings
    int settingError = 0;     ///< of setting the flags
    bool ignoresFlags = false;
    int settings = 0; ///< times that the flags were set
    std::vector<unsigned long> modemRequests;

    [[nodiscard]] bool has(int descriptor) const {
        struct stat status {};
        return device != 0 && ::fstat(descriptor, &status) == 0 && status.st_rdev == device;
    }
    int fail(int error) const {
        errno = error;
        return -1;
    }
    int get(serial_struct& into) const {
        if (!flags)
            return fail(ENOTTY);
        into = {};
        into.flags = *flags;
        return 0;
    }
    int set(const serial_struct& from) {
        ++settings;
        if (settingError != 0)
            return fail(settingError);
        if (!ignoresFlags)
            flags = from.flags;
        return 0;
    }
};

Driver driver;

bool movesModemLines(unsigned long request) {
    static constexpr unsigned long moving[] = {TIOCMSET, TIOCMBIS, TIOCMBIC, TIOCSBRK,   TIOCCBRK,
                                               TCSBRK,   TCSBRKP,  TIOCEXCL, TIOCVHANGUP};
    return std::find(std::begin(moving), std::end(moving), request) != std::end(moving);
}

} // namespace

// NOLINTBEGIN: names and signatures are the system's
extern "C" {

int tcgetattr(int descriptor, termios* settings) noexcept {
    if (driver.refusesConfiguration && driver.has(descriptor))
        return driver.fail(EIO);
    static auto* const systems = reinterpret_cast<int (*)(int, termios*)>(::dlsym(RTLD_NEXT, "tcgetattr"));
    return systems(descriptor, settings);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list list;
    va_start(list, request);
    void* const argument = va_arg(list, void*);
    va_end(list);
    if (request == TIOCGSERIAL && driver.has(descriptor))
        return driver.get(*static_cast<serial_struct*>(argument));
    if (request == TIOCSSERIAL && driver.has(descriptor))
        return driver.set(*static_cast<serial_struct*>(argument));
    if (movesModemLines(request))
        driver.modemRequests.push_back(request);
    return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
}

} // extern "C"
// NOLINTEND

namespace {

std::ptrdiff_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
}

/// Text and error number of the exception.
std::pair<std::string, int> failureOf(const std::function<void()>& opening) {
    try {
        opening();
    } catch (serial::IOException& failure) {
        return {failure.what(), failure.getErrorNumber()};
    }
    return {"opens", 0};
}

class RealOpening : public testing::Test {
protected:
    RealOpening() : m_watching(::open(port().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
        clock.skipPauses();
        m_front.withCamera([](emulator::VirtualCamera& camera) { camera.settings().updateRestartTime = {}; });
        struct stat status {};
        ::fstat(m_watching, &status);
        driver = {};
        driver.device = status.st_rdev;
    }
    ~RealOpening() override {
        driver = {};
        ::close(m_watching);
    }

    [[nodiscard]] std::string port() const { return m_front.portName(); }
    static void upload(CameraSp& camera) {
        files::write("image.bin", std::vector<std::uint8_t>(1300));
        camera.setFirewareFilePath("image.bin");
        EXPECT_TRUE(camera.firewareUpdate());
    }
    void uploadOnce() {
        CameraSp camera(port(), 460800, clock);
        upload(camera);
    }
    [[nodiscard]] bool saysFailure() const {
        const auto lines = out.lines();
        return std::any_of(lines.begin(), lines.end(),
                           [](const std::string& line) { return line.starts_with("command failed:"); });
    }
    [[nodiscard]] termios settings() const {
        termios now{};
        ::tcgetattr(m_watching, &now);
        return now;
    }
    void setHangUp(bool hangsUp) const {
        termios changed = settings();
        changed.c_cflag = hangsUp ? changed.c_cflag | HUPCL : changed.c_cflag & ~tcflag_t{HUPCL};
        changed.c_cflag |= CRTSCTS;
        ::tcsetattr(m_watching, TCSANOW, &changed);
    }

private:
    emulator::PtyFront m_front;
    int m_watching;

protected:
    TestClock clock;
    StdoutCapture out;
};

using OpeningFailure = RealOpening;
using LowLatencyOfALink = RealOpening;
using ModemLines = RealOpening;

TEST_F(OpeningFailure, LeavesNoDescriptorOpen) {
    driver.refusesConfiguration = true;
    const auto before = openDescriptors();
    for (int i = 0; i < 10; ++i)
        EXPECT_THROW(CameraSp(port(), 460800), serial::IOException);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(OpeningFailure, HasTheLibrarysText) {
    driver.refusesConfiguration = true;
    const auto librarys = failureOf([this] {
        const serial::Serial direct(port(), 460800); // loses a descriptor
    });
    EXPECT_NE(librarys.first, "opens");
    EXPECT_EQ(failureOf([this] { const CameraSp camera(port(), 460800); }), librarys);
}

TEST_F(OpeningFailure, LeavesAnEarlierLinkOpen) {
    const auto before = openDescriptors();
    const CameraSp earlier(port(), 460800);
    driver.refusesConfiguration = true;
    EXPECT_THROW(CameraSp(port(), 460800), serial::IOException);
    EXPECT_EQ(openDescriptors(), before + 1);
}

TEST_F(LowLatencyOfALink, LastsFromAFlushingUploadToTheEnd) {
    driver.flags = otherFlag;
    const auto before = openDescriptors();
    {
        CameraSp camera(port(), 460800, clock);
        EXPECT_EQ(driver.flags, otherFlag);
        upload(camera);
        EXPECT_EQ(driver.flags, otherFlag | lowLatencyFlag);
        EXPECT_EQ(driver.settings, 1);
        EXPECT_EQ(openDescriptors(), before + 1) << "the library's alone";
    }
    EXPECT_EQ(driver.flags, otherFlag);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(LowLatencyOfALink, StaysAsAnotherProgramSetIt) {
    driver.flags = lowLatencyFlag;
    uploadOnce();
    EXPECT_EQ(driver.flags, lowLatencyFlag);
    EXPECT_EQ(driver.settings, 0);
}

TEST_F(LowLatencyOfALink, IsNotSetWithoutSettings) {
    uploadOnce();
    EXPECT_EQ(driver.settings, 0);
    EXPECT_FALSE(saysFailure());
}

TEST_F(LowLatencyOfALink, IsNotTakenBackWhenRefused) {
    driver.flags = 0;
    driver.settingError = EPERM;
    uploadOnce();
    EXPECT_EQ(driver.settings, 1);
    EXPECT_FALSE(saysFailure());
}

TEST_F(LowLatencyOfALink, IsNotTakenBackWhenIgnored) {
    driver.flags = 0;
    driver.ignoresFlags = true;
    uploadOnce();
    EXPECT_EQ(driver.settings, 1);
}

TEST_F(ModemLines, AreNotSetByOpeningOrClosing) {
    driver.flags = 0;
    uploadOnce();
    EXPECT_EQ(driver.modemRequests, std::vector<unsigned long>{});
}

TEST_F(ModemLines, AreIgnoredAsInputs) {
    setHangUp(true);
    const CameraSp camera(port(), 460800);
    EXPECT_EQ(settings().c_cflag & (CLOCAL | CRTSCTS), tcflag_t{CLOCAL});
    const termios now = settings();
    EXPECT_EQ(::cfgetospeed(&now), speed_t{B460800}) << "a rate of 0 would drop them";
}

TEST_F(ModemLines, HangUpAtClosingAsTheSystemIsSet) {
    for (const bool hangsUp : {true, false}) {
        setHangUp(hangsUp);
        { const CameraSp camera(port(), 460800); }
        EXPECT_EQ((settings().c_cflag & HUPCL) != 0, hangsUp);
    }
}

/// A serial port of this machine that has modem lines and is no console: adapters are left alone.
std::string machinesPort() {
    std::ifstream file("/sys/class/tty/console/active");
    const std::vector<std::string> consoles{std::istream_iterator<std::string>(file), {}};
    for (const char* const name : {"ttyS0", "ttyS1", "ttyS2", "ttyS3"}) {
        const std::string path = std::string("/dev/") + name;
        if (std::find(consoles.begin(), consoles.end(), name) != consoles.end())
            continue;
        const int descriptor = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        int lines = 0;
        const bool usable = descriptor != -1 && ::ioctl(descriptor, TIOCMGET, &lines) == 0;
        ::close(descriptor);
        if (usable)
            return path;
    }
    return {};
}

TEST(MachinesModemLines, AreUpWhileALinkIsOpen) {
    const std::string port = machinesPort();
    if (port.empty())
        GTEST_SKIP() << "no serial port with modem lines";
    const StdoutCapture out;
    const CameraSp camera(port, 9600);
    const int watching = ::open(port.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    int lines = 0;
    EXPECT_EQ(::ioctl(watching, TIOCMGET, &lines), 0);
    ::close(watching);
    EXPECT_EQ(lines & (TIOCM_DTR | TIOCM_RTS), TIOCM_DTR | TIOCM_RTS);
}

} // namespace
