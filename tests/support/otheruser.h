// Rights of another user, where the test runs as root.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

/// Runs programs as a user without rights over the ports of the administrator.
class OtherUser {
public:
    OtherUser() {
        std::filesystem::permissions(".", std::filesystem::perms::all);
        m_changed = geteuid() == 0 && setresuid(nobody, nobody, 0) == 0;
    }
    ~OtherUser() {
        if (m_changed && setresuid(0, 0, 0) != 0)
            std::abort();
    }
    OtherUser(const OtherUser&) = delete;
    OtherUser& operator=(const OtherUser&) = delete;

private:
    static constexpr uid_t nobody = 65534;
    bool m_changed = false;
};
