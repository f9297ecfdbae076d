// upload_sender: sends a file to the camera on a serial port, by the client or by the plain copy. Built for
// Windows as well: line_bench starts it as a program of its own.
#include "bench/plaincopy.h"
#include "link/camerasp.h"
#include "link/guarded.h"
#include "link/protocol/uploads.h"
#include "link/uploadfile.h"

#include <cstdio>
#include <stdexcept>

namespace {

constexpr const char* usage = "usage: upload_sender PORT client|copy FILE\n";

void sendByClient(const std::string& port, const std::string& path) {
    CameraSp client(port, bench::baudRate);
    client.setAppFilePath(path);
    if (!client.appUpdate())
        throw std::runtime_error("the upload failed");
}

/// As many bytes at a time as the client writes.
void sendByCopy(const std::string& port, const std::string& path) {
    const UploadFileResult read = readUploadFile(path, [](auto, auto) { return true; });
    if (read.end != CommandEnd::done)
        throw std::runtime_error("cannot read " + path);
    bench::copyPlainly({protocol::Command::appAnnounce, protocol::rawChunkSize, false}, port, read.content);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() != 3 || (arguments[1] != "client" && arguments[1] != "copy")) {
        std::fputs(usage, stderr);
        return 2;
    }
    try {
        (arguments[1] == "client" ? sendByClient : sendByCopy)(arguments[0], arguments[2]);
        return 0;
    } catch (...) {
        std::fprintf(stderr, "upload_sender: %s\n", exceptionText().c_str());
    }
    return 1;
}
