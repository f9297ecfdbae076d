// The users of the line: how to start them and read their results.
#pragma once

#include "tests/turn/turnwindow.h"

#include <QPointer>

#include <functional>

namespace turn {

/// A place in which a user shows a result.
struct Shown {
    QString where;
    QString text;
    QString right;
    QStringList failures; ///< what it shows when a command of it failed
    /// Texts of its own values in the wrong place, which it shows when answers come after its timeout.
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
    /// Opens windows, chooses files and sets the camera up; uses no line.
    std::function<void(Work&)> prepare;
    /// False: its control is disabled.
    std::function<bool(const Work&)> canStart;
    std::function<void(Work&)> start;
    std::function<bool(const Work&)> ended;
    std::function<std::vector<Shown>(const Work&)> shown;

    bool meetsOthers = false; ///< everybody else can be started while it works
    bool isLong = false;      ///< takes longer than about 400 ms
    /// With slower answers the user continues without one, and the answer comes too late.
    std::chrono::milliseconds answerLimit = std::chrono::seconds(1);

    bool readsOnWhenMisled = false; ///< for 50 s
    /// The next command takes a late answer for its own; else it drops it.
    bool lateAnswerMisleads = false;

    [[nodiscard]] bool existsFor(std::uint32_t cameraType) const;
    /// The answer may come after the user's timeout.
    [[nodiscard]] bool leavesLateAnswer(std::chrono::milliseconds answerDelay) const;
    [[nodiscard]] bool misleads(std::chrono::milliseconds answerDelay) const {
        return lateAnswerMisleads && leavesLateAnswer(answerDelay);
    }
};

[[nodiscard]] const std::vector<User>& users();
/// Throws when there is none of this name.
[[nodiscard]] const User& userCalled(const std::string& name);
void PrintTo(const User& user, std::ostream* out);

/// Ready to start; another user may still disable its control.
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
