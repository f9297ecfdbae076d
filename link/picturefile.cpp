#include "link/picturefile.h"

#include "link/diagnostics.h"

#include <filesystem>
#include <fstream>

bool writePicture(const std::string& name, protocol::ByteView picture, const std::string& folder) {
    const std::filesystem::path path =
        std::filesystem::path(std::u8string(folder.begin(), folder.end())) / name;
    std::filesystem::path partial = path;
    partial += ".part";
    std::ofstream file(partial, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(picture.begin()), static_cast<std::streamsize>(picture.size()));
    file.close();
    std::error_code failure;
    if (file)
        std::filesystem::rename(partial, path, failure);
    if (file && !failure)
        return true;
    std::filesystem::remove(partial, failure);
    diagnostics::line("can't write picture:", name);
    return false;
}
