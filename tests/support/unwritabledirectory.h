// A working directory that nothing can be written into.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

/// Takes write permission off the working directory for as long as it lives. The administrator is not bound
/// by permissions: run by one, the process steps down to a user without rights meanwhile.
class UnwritableDirectory {
public:
    UnwritableDirectory() {
        std::filesystem::permissions(
            m_path, perms::all & ~(perms::owner_write | perms::group_write | perms::others_write));
        if (m_user == 0)
            m_steppedDown = seteuid(nobody) == 0;
    }
    ~UnwritableDirectory() {
        if (m_steppedDown && seteuid(m_user) != 0)
            std::abort();
        std::filesystem::permissions(m_path, perms::owner_all);
    }
    UnwritableDirectory(const UnwritableDirectory&) = delete;
    UnwritableDirectory& operator=(const UnwritableDirectory&) = delete;

private:
    using perms = std::filesystem::perms;
    static constexpr uid_t nobody = 65534;

    std::filesystem::path m_path = std::filesystem::current_path();
    uid_t m_user = geteuid();
    bool m_steppedDown = false;
};
