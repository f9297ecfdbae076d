#include "link/picturefile.h"

#include "link/diagnostics.h"

#include <filesystem>
#include <fstream>

bool writePicture(const std::string& name, protocol::ByteView picture) {
    const std::filesystem::path partial(name + ".part");
    std::ofstream file(partial, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(picture.begin()), static_cast<std::streamsize>(picture.size()));
    file.close();
    std::error_code failure;
    if (file)
        std::filesystem::rename(partial, name, failure);
    if (file && !failure)
        return true;
    std::filesystem::remove(partial, failure);
    diagnostics::line("can't write picture:", name);
    return false;
}
