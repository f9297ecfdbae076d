// Everybody who uses the line, as a technician starts and sees it.
#pragma once

#include "tests/turn/turnwindow.h"

#include <QPointer>

#include <functional>

namespace turn {

/// One place in which a user shows what it got.
struct Shown {
    QString where;
    QString text;
    QString right;
    QStringList failures; ///< what it shows when a command of it failed
    /// What it also shows by itself when answers come later than it waits: its own values in the wrong place.
    QStringList shifted;
};

/// One user at work.
struct Work {
    TurnWindow& bench;
    QPointer<QWidget> window; ///< the user's own; null when it works in the main window
    qsizetype boxesBefore = 0;
};

struct User {
    const char* name = nullptr;
    std::vector<std::uint32_t> cameraTypes; ///< choices in the window under which this user exists
    /// Its button or menu entry in the main window is enabled.
    std::function<bool(const TurnWindow&)> isOffered;
    /// Before anything is on the line: opens windows, chooses files, sets the camera up.
    std::function<void(Work&)> prepare;
    /// False: its control is disabled.
    std::function<bool(const Work&)> canStart;
    std::function<void(Work&)> start;
    std::function<bool(const Work&)> ended;
    std::function<std::vector<Shown>(const Work&)> shown;

    bool meetsOthers = false; ///< everybody else can be started while it works
    bool isLong = false;      ///< takes longer than about 400 ms
    /// With slower answers the user goes on without one, and the answer comes when it is over.
    std::chrono::milliseconds answerLimit = std::chrono::seconds(1);

    bool readsOnWhenMisled = false; ///< for 50 s
    /// The next command takes such an answer for its own; else it drops it.
    bool lateAnswerMisleads = false;

    [[nodiscard]] bool existsFor(std::uint32_t cameraType) const;
    /// The answer may come when the user has given it up.
    [[nodiscard]] bool leavesLateAnswer(std::chrono::milliseconds answerDelay) const;
    [[nodiscard]] bool misleads(std::chrono::milliseconds answerDelay) const {
        return lateAnswerMisleads && leavesLateAnswer(answerDelay);
    }
};

[[nodiscard]] const std::vector<User>& users();
/// Throws when there is none of this name.
[[nodiscard]] const User& userCalled(const std::string& name);
void PrintTo(const User& user, std::ostream* out);

/// Ready to start; its control may still be disabled by somebody else.
[[nodiscard]] Work prepared(const User& user, TurnWindow& bench);
/// Closes the user's own window, if it has one.
void closeOwnWindow(Work& work);

/// Each place shows its right value or a failure of its own; with lateAnswers also a shifted one.
void expectOwnValues(const User& user, const Work& work, bool lateAnswers);
/// Right values only.
void expectRightValues(const User& user, const Work& work);
/// How many places show a failure.
[[nodiscard]] int failuresShown(const User& user, const Work& work);

} // namespace turn
