// Parts of the table of users, for its sources.
#pragma once

#include "tests/support/cameratype.h"
#include "tests/turn/users.h"

namespace turn {

inline const std::vector<std::uint32_t> anyType{cameratype::ostra, cameratype::quenta,
                                                cameratype::shelfDynamic};

[[nodiscard]] bool isChoosable(const TurnWindow& bench, const char* menuEntry);

/// Of any camera type, without preparation.
[[nodiscard]] User userOf(const char* name, std::function<bool(const TurnWindow&)> isOffered);

/// Starts with a button of the main window and blocks until it ends.
[[nodiscard]] User mainUser(const char* name, const char* button,
                            std::function<std::vector<Shown>(const MainWindow&)> shown);

/// Starts with a button of an open window.
template <typename Window>
User buttonUser(const char* name, const char* entry, const char* button,
                std::function<std::vector<Shown>(const Work&)> shown) {
    User user = userOf(name, [entry](const TurnWindow& bench) { return isChoosable(bench, entry); });
    user.prepare = [entry](Work& work) { work.window = work.bench.openWindow<Window>(entry); };
    user.canStart = [button](const Work& work) {
        return work.window && guitest::isEnabled(*work.window, button);
    };
    user.start = [button](Work& work) { guitest::click(*work.window, button); };
    user.ended = [](const Work&) { return true; };
    user.shown = std::move(shown);
    return user;
}

/// Captures, lists, downloads, views.
[[nodiscard]] std::vector<User> pictureUsers();

} // namespace turn
